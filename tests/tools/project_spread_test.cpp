#include "train/project_spread.h"

#include <gtest/gtest.h>

namespace quillon::lingomat::tools {
namespace {

SampleTokens sample(std::size_t language, const std::string& project,
                    const std::vector<std::string>& tokens) {
  SampleTokens counted = count_sample(tokens, 0);
  counted.language = language;
  counted.project = project;
  return counted;
}

std::vector<std::string> kept(const LanguageStatistics& statistics) {
  std::vector<std::string> tokens;
  for (const auto& entry : statistics.counts) tokens.push_back(entry.first);
  return tokens;
}

TEST(ProjectSpreadTest, KeepsTokensSeveralProjectsUseAndTheTotals) {
  const std::vector<SampleTokens> samples = {
      sample(0, "alpha", {"def", "alpha_only", "x"}),
      sample(0, "alpha", {"def", "alpha_only"}),  // two files of one project: still one
      sample(0, "beta", {"def", "x", "beta_only"}),
      sample(0, "gamma", {"def"}),
      sample(1, "solo", {"fn", "once"}),  // one project: its files are the groups
      sample(1, "solo", {"fn"}),
  };
  std::vector<LanguageStatistics> statistics = tally_samples(samples, 2);
  const auto before = statistics;
  prune_by_project_spread(statistics, samples, 1);
  EXPECT_EQ(statistics[0].counts, before[0].counts);

  prune_by_project_spread(statistics, samples, 2);
  EXPECT_EQ(kept(statistics[0]), (std::vector<std::string>{"def", "x"}));
  EXPECT_EQ(statistics[0].counts.at("def"), 4u);
  EXPECT_EQ(statistics[0].tokens, before[0].tokens);
  EXPECT_EQ(statistics[0].pruned_tokens, 2u);
  EXPECT_EQ(kept(statistics[1]), (std::vector<std::string>{"fn"}));

  prune_by_project_spread(statistics, samples, 3);
  EXPECT_EQ(kept(statistics[0]), (std::vector<std::string>{"def"}));
}

TEST(ProjectSpreadTest, ALanguageWithFewerGroupsKeepsWhatAllShare) {
  const std::vector<SampleTokens> samples = {sample(0, "a", {"k", "a1"}), sample(0, "b", {"k"}),
                                             sample(1, "only", {"z", "y"})};
  std::vector<LanguageStatistics> statistics = tally_samples(samples, 3);
  prune_by_project_spread(statistics, samples, 5);
  EXPECT_EQ(kept(statistics[0]), (std::vector<std::string>{"k"}));
  EXPECT_EQ(kept(statistics[1]), (std::vector<std::string>{"y", "z"}));
  EXPECT_TRUE(statistics[2].counts.empty());
}

TEST(ProjectSpreadTest, TallyMatchesSamplesAddedOneByOne) {
  const std::vector<SampleTokens> samples = {sample(0, "p", {"a", "a", "\xE9", "b"}),
                                             sample(0, "q", {"b"})};
  const auto tallied = tally_samples(samples, 1);
  LanguageStatistics added;
  add_sample({"a", "a", "\xE9", "b"}, added);
  add_sample({"b"}, added);
  EXPECT_EQ(tallied[0].counts, added.counts);
  EXPECT_EQ(tallied[0].tokens, added.tokens);
  EXPECT_EQ(tallied[0].invalid_tokens, 1u);
  EXPECT_EQ(tallied[0].samples, 2u);
}

}  // namespace
}  // namespace quillon::lingomat::tools
