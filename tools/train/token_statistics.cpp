#include "train/token_statistics.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace quillon::lingomat::tools {

std::vector<LanguageStatistics> tally_samples(const std::vector<SampleTokens>& samples,
                                              std::size_t languages) {
  std::vector<LanguageStatistics> statistics(languages);
  // Hashing first, then one ordered copy per language: far cheaper than inserting every
  // occurrence into the ordered map.
  std::vector<std::unordered_map<std::string_view, std::uint64_t>> counts(languages);
  for (const SampleTokens& sample : samples) {
    LanguageStatistics& language = statistics.at(sample.language);
    ++language.samples;
    language.tokens += sample.counted;
    language.invalid_tokens += sample.invalid;
    for (const auto& [token, count] : sample.tokens) counts[sample.language][token] += count;
  }
  for (std::size_t language = 0; language < languages; ++language) {
    for (const auto& [token, count] : counts[language]) {
      statistics[language].counts.emplace(std::string(token), count);
    }
  }
  return statistics;
}

std::vector<LanguageStatistics> count_tokens(const std::vector<std::vector<SampleFile>>& files,
                                             const Tokenizer& tokenizer, unsigned threads,
                                             std::uint64_t max_repeats,
                                             const ProgressFn& progress) {
  return tally_samples(read_sample_tokens(files, tokenizer, threads, max_repeats, progress),
                       files.size());
}

std::vector<std::string> long_singletons(const LanguageStatistics& statistics,
                                         std::uint64_t max_bytes) {
  std::vector<std::string> tokens;
  if (max_bytes == 0) return tokens;
  for (const auto& [token, count] : statistics.counts) {
    if (count == 1 && token.size() > max_bytes) tokens.push_back(token);
  }
  return tokens;
}

void drop_tokens(LanguageStatistics& statistics, const std::vector<std::string>& tokens) {
  for (const std::string& token : tokens)
    statistics.pruned_tokens += statistics.counts.erase(token);
}

void prune_tokens(LanguageStatistics& statistics, std::uint64_t min_count,
                  std::uint64_t max_distinct) {
  const std::size_t before = statistics.counts.size();
  for (auto it = statistics.counts.begin(); it != statistics.counts.end();) {
    it = it->second < min_count ? statistics.counts.erase(it) : std::next(it);
  }
  if (max_distinct != 0 && statistics.counts.size() > max_distinct) {
    std::vector<std::pair<std::string, std::uint64_t>> ranked(statistics.counts.begin(),
                                                              statistics.counts.end());
    std::sort(ranked.begin(), ranked.end(), [](const auto& a, const auto& b) {
      if (a.second != b.second) return a.second > b.second;
      return a.first < b.first;
    });
    ranked.resize(max_distinct);
    statistics.counts = std::map<std::string, std::uint64_t>(ranked.begin(), ranked.end());
  }
  statistics.pruned_tokens += before - statistics.counts.size();
}

}  // namespace quillon::lingomat::tools
