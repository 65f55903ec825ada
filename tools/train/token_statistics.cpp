#include "train/token_statistics.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "common/file_io.h"
#include "common/utf8.h"

namespace quillon::lingomat::tools {

namespace {

// One thread's running counts, merged into the ordered result at the end.
struct PartialCounts {
  std::uint64_t samples = 0;
  std::uint64_t tokens = 0;
  std::uint64_t invalid_tokens = 0;
  std::unordered_map<std::string, std::uint64_t> counts;
};

void add_tokens(const std::vector<std::string>& tokens, std::uint64_t max_repeats,
                PartialCounts& partial) {
  ++partial.samples;
  // Per-sample counts first, so that one file repeating a token cannot outweigh many files.
  std::unordered_map<std::string_view, std::uint64_t> in_sample;
  for (const std::string& token : tokens) {
    // A token that is not UTF-8 cannot be stored in JSON as it is. Dropping
    // it entirely makes it unseen in every language at identification, which
    // shifts every language's score by the same amount.
    if (!is_valid_utf8(token)) {
      ++partial.invalid_tokens;
      continue;
    }
    if (max_repeats != 0 && ++in_sample[token] > max_repeats) continue;
    ++partial.tokens;
    ++partial.counts[token];
  }
}

void merge_into(LanguageStatistics& statistics, const PartialCounts& partial) {
  statistics.samples += partial.samples;
  statistics.tokens += partial.tokens;
  statistics.invalid_tokens += partial.invalid_tokens;
  for (const auto& [token, count] : partial.counts) statistics.counts[token] += count;
}

}  // namespace

void add_sample(const std::vector<std::string>& tokens, LanguageStatistics& statistics,
                std::uint64_t max_repeats) {
  PartialCounts partial;
  add_tokens(tokens, max_repeats, partial);
  merge_into(statistics, partial);
}

std::vector<LanguageStatistics> count_tokens(const std::vector<std::vector<SampleFile>>& files,
                                             const Tokenizer& tokenizer, unsigned threads,
                                             std::uint64_t max_repeats,
                                             const ProgressFn& progress) {
  struct Job {
    std::size_t language;
    const SampleFile* file;
  };
  std::vector<Job> jobs;
  for (std::size_t language = 0; language < files.size(); ++language) {
    for (const SampleFile& file : files[language]) jobs.push_back({language, &file});
  }

  threads = std::max(1u, threads);
  std::vector<std::vector<PartialCounts>> partials(threads,
                                                   std::vector<PartialCounts>(files.size()));
  run_parallel(
      jobs.size(), threads,
      [&](std::size_t index, unsigned worker) {
        const Job& job = jobs[index];
        const std::string text = read_file(job.file->path, "sample");
        add_tokens(tokenizer.extract_tokens(text), max_repeats, partials[worker][job.language]);
      },
      progress);

  std::vector<LanguageStatistics> statistics(files.size());
  for (auto& worker : partials) {
    for (std::size_t language = 0; language < files.size(); ++language) {
      merge_into(statistics[language], worker[language]);
      worker[language] = PartialCounts();  // give the memory back early
    }
  }
  return statistics;
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
