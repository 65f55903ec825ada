#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/parallel.h"
#include "common/samples_tree.h"
#include "tokenize/tokenizer.h"
#include "train/sample_tokens.h"

namespace quillon::lingomat::tools {

// What the samples of one language contribute to the data file.
struct LanguageStatistics {
  std::uint64_t samples = 0;
  // Token occurrences of all samples; stays the full count when rare tokens
  // are pruned, so that the kept tokens' probabilities are not inflated.
  std::uint64_t tokens = 0;
  std::uint64_t invalid_tokens = 0;  // occurrences dropped for not being UTF-8
  std::uint64_t pruned_tokens = 0;   // distinct tokens removed by pruning
  std::map<std::string, std::uint64_t> counts;
};

// Sums samples already tokenized into one entry per language (sample.language
// indexes the result).
std::vector<LanguageStatistics> tally_samples(const std::vector<SampleTokens>& samples,
                                              std::size_t languages);

// Tokenizes every sample on `threads` threads and sums them: read_sample_tokens,
// then tally_samples. files[i] belong to language i. Integer sums do not depend
// on the order in which threads finish, so the result is the same on every run.
// A token counts at most `max_repeats` times per sample (0: every occurrence).
std::vector<LanguageStatistics> count_tokens(const std::vector<std::vector<SampleFile>>& files,
                                             const Tokenizer& tokenizer, unsigned threads,
                                             std::uint64_t max_repeats = 0,
                                             const ProgressFn& progress = {});

// The tokens seen exactly once that are longer than `max_bytes` bytes (0: none).
// Short ones are mostly shared vocabulary that files of other projects meet
// again; long ones mostly one file's identifiers and strings.
std::vector<std::string> long_singletons(const LanguageStatistics& statistics,
                                         std::uint64_t max_bytes);

// Removes `tokens` from the counts; the tokens total stays as it was.
void drop_tokens(LanguageStatistics& statistics, const std::vector<std::string>& tokens);

// Drops tokens seen fewer than `min_count` times, then keeps at most
// `max_distinct` tokens (0: all): the most frequent, ties by token bytes.
void prune_tokens(LanguageStatistics& statistics, std::uint64_t min_count,
                  std::uint64_t max_distinct);

}  // namespace quillon::lingomat::tools
