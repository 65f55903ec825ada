#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/definitions.h"
#include "train/token_statistics.h"

namespace quillon::lingomat::tools {

// Where the data file puts scores against the engine's fixed floors. Every
// token count is multiplied by count_scale and "tokens_total" is divided by
// it, which raises every score per token by ln(count_scale) and changes no
// ranking. tokens_total sets the cost of a token a language never saw,
// ln(1 / tokens_total) before scaling; 0 means the counted total.
struct Calibration {
  std::uint64_t count_scale = 1;
  std::uint64_t tokens_total = 0;
};

// What the trainer did when the counts encode re-estimated weights instead of
// occurrences: the counts are then written as given (already scaled), each
// language's "language_tokens" is the divisor chosen for them, and the
// occurrences counted are recorded apart.
struct DiscriminativeRecord {
  std::uint64_t epochs = 0;  // 0: the counts are occurrences
  std::string rate;
  std::string margin;
  std::uint64_t counted_tokens = 0;
  std::string l2;  // the logistic loss's shrink; empty when the perceptron ran
};

// The data file as JSON text. statistics[i] belongs to languages[i]; a
// language with no samples gets its name entries only. Name lists keep the
// definitions order, which decides the fallback among shared names; tokens
// are in byte order. Throws ToolError when a count does not fit the signed
// 32-bit integers the engine reads. The calibration is recorded under
// "calibration", a key the engine ignores, with the discriminative record under
// its "discriminative" member when there is one.
std::string render_data_file(const std::vector<LanguageDefinition>& languages,
                             const std::vector<LanguageStatistics>& statistics,
                             const Calibration& calibration = {},
                             const DiscriminativeRecord& discriminative = {});

}  // namespace quillon::lingomat::tools
