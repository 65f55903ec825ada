#include "train/token_statistics.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "common/tool_error.h"
#include "sample_corpus.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::TempDir;
using test_support::write_text;

TEST(TokenStatisticsTest, CountsSamplesAndOccurrences) {
  LanguageStatistics statistics;
  add_sample({"int", "x", ";", "int"}, statistics);
  add_sample({}, statistics);
  EXPECT_EQ(statistics.samples, 2u);
  EXPECT_EQ(statistics.tokens, 4u);
  EXPECT_EQ(statistics.counts,
            (std::map<std::string, std::uint64_t>{{";", 1}, {"int", 2}, {"x", 1}}));
}

TEST(TokenStatisticsTest, MaxRepeatsCapsEachTokenPerSampleAndTheTotalWithIt) {
  LanguageStatistics statistics;
  add_sample({"a", "a", "a", "b", "a"}, statistics, 2);
  add_sample({"a", "b", "b"}, statistics, 2);
  EXPECT_EQ(statistics.counts, (std::map<std::string, std::uint64_t>{{"a", 3}, {"b", 3}}));
  EXPECT_EQ(statistics.tokens, 6u);  // the divisor counts what was kept

  LanguageStatistics presence;
  add_sample({"a", "a", "b"}, presence, 1);
  add_sample({"a"}, presence, 1);
  EXPECT_EQ(presence.counts, (std::map<std::string, std::uint64_t>{{"a", 2}, {"b", 1}}));
}

TEST(TokenStatisticsTest, DropsTokensThatAreNotUtf8WithoutCountingThem) {
  LanguageStatistics statistics;
  add_sample({"caf\xC3\xA9", "caf", "\xE9", "\xE9", "ok"}, statistics);
  EXPECT_EQ(statistics.tokens, 3u);
  EXPECT_EQ(statistics.invalid_tokens, 2u);
  EXPECT_EQ(statistics.counts.count("\xE9"), 0u);
  EXPECT_EQ(statistics.counts.at("caf\xC3\xA9"), 1u);
}

TEST(TokenStatisticsTest, PruningDropsRareTokensButKeepsTheTotal) {
  LanguageStatistics statistics;
  add_sample({"a", "a", "a", "b", "b", "c", "d", "d"}, statistics);
  prune_tokens(statistics, 2, 0);
  EXPECT_EQ(statistics.counts,
            (std::map<std::string, std::uint64_t>{{"a", 3}, {"b", 2}, {"d", 2}}));
  EXPECT_EQ(statistics.tokens, 8u);
  EXPECT_EQ(statistics.pruned_tokens, 1u);

  // Keeping two: "a" is most frequent; "b" beats "d" on bytes at equal counts.
  prune_tokens(statistics, 1, 2);
  EXPECT_EQ(statistics.counts, (std::map<std::string, std::uint64_t>{{"a", 3}, {"b", 2}}));
  EXPECT_EQ(statistics.pruned_tokens, 2u);
  prune_tokens(statistics, 1, 0);
  EXPECT_EQ(statistics.counts.size(), 2u);
}

TEST(TokenStatisticsTest, LongSingletonsAreTheLongTokensSeenOnce) {
  LanguageStatistics statistics;
  add_sample({"if", "x", "parse_config_file", "parse_config_file", "render_widget_tree", "elif"},
             statistics);
  EXPECT_TRUE(long_singletons(statistics, 0).empty());
  const std::vector<std::string> found = long_singletons(statistics, 4);
  EXPECT_EQ(found, (std::vector<std::string>{"render_widget_tree"}));

  drop_tokens(statistics, found);
  drop_tokens(statistics, found);  // already gone: nothing more is counted
  EXPECT_EQ(statistics.counts, (std::map<std::string, std::uint64_t>{
                                   {"elif", 1}, {"if", 1}, {"parse_config_file", 2}, {"x", 1}}));
  EXPECT_EQ(statistics.tokens, 6u);
  EXPECT_EQ(statistics.pruned_tokens, 1u);
}

TEST(TokenStatisticsTest, TallyMatchesSamplesAddedOneByOne) {
  std::vector<SampleTokens> samples = {count_sample({"a", "a", "\xE9", "b"}, 0),
                                       count_sample({"b"}, 0)};
  const auto tallied = tally_samples(samples, 1);
  LanguageStatistics added;
  add_sample({"a", "a", "\xE9", "b"}, added);
  add_sample({"b"}, added);
  EXPECT_EQ(tallied[0].counts, added.counts);
  EXPECT_EQ(tallied[0].tokens, added.tokens);
  EXPECT_EQ(tallied[0].invalid_tokens, 1u);
  EXPECT_EQ(tallied[0].samples, 2u);
}

std::vector<std::vector<SampleFile>> corpus_files(const std::string& root) {
  test_support::write_sample_corpus(root);
  std::map<std::string, std::vector<SampleFile>> by_language;
  for (const auto& file : test_support::sample_corpus()) {
    by_language[file.language].push_back(
        {file.project, file.relative_path, root + "/" + file.language + "/" + file.relative_path});
  }
  std::vector<std::vector<SampleFile>> files;
  for (auto& entry : by_language) files.push_back(entry.second);
  return files;
}

TEST(TokenStatisticsTest, ThreadCountDoesNotChangeTheResult) {
  TempDir dir;
  const auto files = corpus_files(dir / "s");
  const Tokenizer tokenizer(Tokenizer::Opts{});
  const auto one = count_tokens(files, tokenizer, 1);
  const auto many = count_tokens(files, tokenizer, 5);
  ASSERT_EQ(one.size(), files.size());
  ASSERT_EQ(many.size(), files.size());
  for (std::size_t i = 0; i < one.size(); ++i) {
    EXPECT_EQ(one[i].samples, files[i].size());
    EXPECT_GT(one[i].tokens, 0u);
    EXPECT_EQ(one[i].samples, many[i].samples);
    EXPECT_EQ(one[i].tokens, many[i].tokens);
    EXPECT_EQ(one[i].counts, many[i].counts);
  }
}

TEST(TokenStatisticsTest, TrainsOnTheTokensTheEngineSees) {
  TempDir dir;
  write_text(dir / "a.c", "int main(void) { return 0; }\n");
  const Tokenizer tokenizer(Tokenizer::Opts{0, 3});
  const auto statistics = count_tokens({{{"p", "p/a.c", dir / "a.c"}}}, tokenizer, 2);
  std::uint64_t sum = 0;
  for (const auto& [token, count] : statistics.at(0).counts) sum += count;
  const auto expected = tokenizer.extract_tokens("int main(void) { return 0; }\n");
  EXPECT_EQ(expected.size(), 3u);
  EXPECT_EQ(statistics.at(0).tokens, 3u);
  EXPECT_EQ(sum, 3u);
  for (const std::string& token : expected) EXPECT_EQ(statistics.at(0).counts.count(token), 1u);
}

TEST(TokenStatisticsTest, ReportsTheFirstUnreadableSample) {
  TempDir dir;
  std::vector<SampleFile> files;
  for (int i = 0; i < 40; ++i) {
    const std::string path = dir / ("f" + std::to_string(i) + ".c");
    if (i == 17 || i == 31) {
      std::filesystem::create_symlink(dir / "nowhere", path);  // dangling: cannot be read
    } else {
      write_text(path, "int x;");
    }
    files.push_back({"p", "p/f" + std::to_string(i), path});
  }
  const Tokenizer tokenizer(Tokenizer::Opts{});
  for (unsigned threads : {1u, 4u}) {
    try {
      count_tokens({files}, tokenizer, threads);
      ADD_FAILURE() << "no error";
    } catch (const ToolError& error) {
      EXPECT_EQ(std::string(error.what()),
                "cannot read sample " + (dir / "f17.c") + ": No such file or directory");
    }
  }
}

}  // namespace
}  // namespace quillon::lingomat::tools
