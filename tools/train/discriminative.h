#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/samples_tree.h"
#include "tokenize/tokenizer.h"
#include "train/data_file_writer.h"
#include "train/sample_tokens.h"
#include "train/token_statistics.h"

namespace quillon::lingomat::tools {

// How the naive-Bayes weights are re-estimated to reduce ranking errors; epochs 0
// leaves them as counted.
struct DiscriminativeConfig {
  // The perceptron moves weights only for a misranked sample, toward its language and
  // away from the best rival; the logistic loss moves them for every sample, by the
  // gradient of the cross-entropy of the softmax over all languages' scores.
  enum class Loss { kPerceptron, kLogistic };
  std::uint64_t epochs = 0;
  // The weight change a misranked sample makes, spread over its token occurrences.
  double rate = 0.5;
  double margin = 0.0;  // a sample is misranked unless its language leads by more
  Loss loss = Loss::kPerceptron;
  // Logistic loss only: after each epoch every change from the counted weights shrinks
  // by this fraction, which keeps tokens few files saw near their counted weights.
  double l2 = 0.0;
};

// Misranked training samples before the first epoch and after each one.
struct DiscriminativeReport {
  std::vector<std::size_t> errors;
  std::size_t samples = 0;  // samples that could be scored with their project left out
};

// Starts from the weights `statistics` give under `calibration` and adjusts the
// weights of the (token, language) pairs they hold with an averaged perceptron over
// `samples`. Each sample is scored with its own project's counts taken out of its
// language (its own file's when the language has one project), so that it is ranked
// as a file of an unseen project would be. Returns statistics whose counts encode the
// averaged weights over per-language totals chosen for fine resolution; "tokens" of
// the result is that total, and the calibration's scale is already applied.
std::vector<LanguageStatistics> train_discriminatively(
    const std::vector<LanguageStatistics>& statistics, const Calibration& calibration,
    const std::vector<SampleTokens>& samples, const DiscriminativeConfig& config,
    DiscriminativeReport& report);

// A total over which counts encode weights from `lowest` to `highest` as
// ln(count / total) with counts up to 2147483647, the smallest weight with a count of
// at least `resolution` where that limit allows; and the count for one weight.
std::uint64_t total_for_weights(double lowest, double highest, double resolution);
std::uint64_t count_for_weight(double weight, std::uint64_t total);

}  // namespace quillon::lingomat::tools
