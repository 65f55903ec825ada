#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "common/parallel.h"
#include "common/samples_tree.h"
#include "tokenize/tokenizer.h"

namespace quillon::lingomat::tools {

// One training sample as the engine reads it: its tokens counted under the
// trainer's rules (valid UTF-8 only, at most max_repeats per token).
struct SampleTokens {
  std::size_t language = 0;
  std::string project;
  std::uint64_t counted = 0;  // occurrences counted
  std::uint64_t invalid = 0;  // occurrences dropped for not being UTF-8
  std::vector<std::pair<std::string, std::uint64_t>> tokens;  // byte order
};

// Counts one token list. A token that is not UTF-8 cannot be stored in JSON as
// it is; dropping it makes it unseen in every language at identification,
// which shifts every language's score by the same amount.
SampleTokens count_sample(const std::vector<std::string>& tokens, std::uint64_t max_repeats);

// Tokenizes every sample once, on `threads` threads, in files order (files[i]
// belong to language i). An unreadable sample is a ToolError naming it.
std::vector<SampleTokens> read_sample_tokens(const std::vector<std::vector<SampleFile>>& files,
                                             const Tokenizer& tokenizer, unsigned threads,
                                             std::uint64_t max_repeats,
                                             const ProgressFn& progress = {});

}  // namespace quillon::lingomat::tools
