#include "train/sample_tokens.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "common/file_io.h"
#include "common/utf8.h"

namespace quillon::lingomat::tools {

SampleTokens count_sample(const std::vector<std::string>& tokens, std::uint64_t max_repeats) {
  SampleTokens sample;
  std::map<std::string_view, std::uint64_t> in_sample;
  for (const std::string& token : tokens) {
    if (!is_valid_utf8(token)) {
      ++sample.invalid;
      continue;
    }
    std::uint64_t& count = in_sample[token];
    // Per-sample caps, so that one file repeating a token cannot outweigh many files.
    if (max_repeats != 0 && count >= max_repeats) continue;
    ++count;
    ++sample.counted;
  }
  sample.tokens.reserve(in_sample.size());
  for (const auto& [token, count] : in_sample) sample.tokens.emplace_back(token, count);
  return sample;
}

std::vector<SampleTokens> read_sample_tokens(const std::vector<std::vector<SampleFile>>& files,
                                             const Tokenizer& tokenizer, unsigned threads,
                                             std::uint64_t max_repeats,
                                             const ProgressFn& progress) {
  std::vector<SampleTokens> samples;
  std::vector<const SampleFile*> paths;
  for (std::size_t language = 0; language < files.size(); ++language) {
    for (const SampleFile& file : files[language]) {
      samples.emplace_back();
      samples.back().language = language;
      samples.back().project = file.project;
      paths.push_back(&file);
    }
  }
  run_parallel(
      samples.size(), std::max(1u, threads),
      [&](std::size_t index, unsigned) {
        SampleTokens counted = count_sample(
            tokenizer.extract_tokens(read_file(paths[index]->path, "sample")), max_repeats);
        samples[index].counted = counted.counted;
        samples[index].invalid = counted.invalid;
        samples[index].tokens = std::move(counted.tokens);
      },
      progress);
  return samples;
}

}  // namespace quillon::lingomat::tools
