#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/split.h"
#include "tokenize/tokenizer.h"
#include "train/data_file_writer.h"
#include "train/discriminative.h"

namespace quillon::lingomat::tools {

// Everything one training run needs, as given on the command line.
struct TrainConfig {
  std::string definitions_path;
  std::string samples_root;
  std::string output_path;
  Tokenizer::Opts tokenizer;                  // defaults: what identification reads
  std::uint64_t max_samples = 0;              // per language; 0: all
  std::uint64_t max_repeats = 0;              // per token and sample; 0: every occurrence
  std::uint64_t min_count = 1;                // rarer tokens of a language are dropped
  std::uint64_t max_singleton_bytes = 0;      // longer tokens seen once are dropped; 0: keep
  std::uint64_t max_tokens_per_language = 0;  // distinct tokens kept; 0: all
  std::vector<std::string> only;              // empty: every defined language
  std::string prior_shares_path;              // empty: priors from the sample counts
  Calibration calibration;
  DiscriminativeConfig discriminative;
  SplitRule split;
  unsigned threads = 1;
  bool progress = false;  // a progress line on standard error
};

}  // namespace quillon::lingomat::tools
