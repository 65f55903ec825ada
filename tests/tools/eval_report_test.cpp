#include "eval/eval_report.h"

#include <gtest/gtest.h>

namespace quillon::lingomat::tools {
namespace {

std::vector<Identification> answers(
    const std::vector<std::pair<std::string, std::string>>& expected_and_answer) {
  std::vector<Identification> list;
  for (const auto& [expected, answer] : expected_and_answer) {
    list.push_back({expected, answer, 0.5, 1000});
  }
  return list;
}

TEST(EvalReportTest, CountsCorrectWrongAndNoAnswerSeparately) {
  const auto report = build_mode_report(
      "content", "d",
      answers({{"C", "C"}, {"C", "C++"}, {"C", ""}, {"C", "C"}, {"Go", "Go"}, {"Go", ""}}));
  EXPECT_EQ(report.files, 6u);
  EXPECT_EQ(report.correct, 3u);
  EXPECT_EQ(report.wrong, 1u);
  EXPECT_EQ(report.no_answer, 2u);
  EXPECT_DOUBLE_EQ(report.accuracy(), 0.5);
  ASSERT_EQ(report.languages.size(), 2u);
  const LanguageReport& c = report.languages[0];
  EXPECT_EQ(c.language, "C");
  EXPECT_EQ(c.files, 4u);
  EXPECT_EQ(c.correct, 2u);
  EXPECT_EQ(c.wrong, 1u);
  EXPECT_EQ(c.no_answer, 1u);
  EXPECT_EQ(c.mistaken_for, "C++");
  EXPECT_EQ(report.languages[1].mistaken_for, "");  // no answer is not a mistake
  EXPECT_EQ(report.languages[1].mistaken_for_count, 0u);
  // (2/4 + 1/2) / 2: every language weighs the same.
  EXPECT_DOUBLE_EQ(report.language_accuracy(), 0.5);
}

TEST(EvalReportTest, ListsConfusionsMostFrequentFirst) {
  const auto report = build_mode_report("content", "d",
                                        answers({{"C", "Objective-C"},
                                                 {"C", "C++"},
                                                 {"C", "C++"},
                                                 {"C", "Objective-C"},
                                                 {"Perl", "Raku"},
                                                 {"Perl", "Raku"},
                                                 {"Perl", "Raku"},
                                                 {"Go", "C"}}));
  ASSERT_EQ(report.confusions.size(), 4u);
  EXPECT_EQ(report.confusions[0].expected, "Perl");
  EXPECT_EQ(report.confusions[0].count, 3u);
  EXPECT_EQ(report.confusions[1].answer, "C++");  // ties by names
  EXPECT_EQ(report.confusions[2].answer, "Objective-C");
  EXPECT_EQ(report.confusions[3].expected, "Go");
  EXPECT_EQ(report.languages[0].mistaken_for, "C++");  // tie broken by name
  EXPECT_EQ(report.languages[0].mistaken_for_count, 2u);
}

TEST(EvalReportTest, ThroughputUsesEngineTimeOnly) {
  const auto report = build_mode_report("content", "d", answers({{"C", "C"}, {"C", "C"}}));
  EXPECT_DOUBLE_EQ(report.seconds, 1.0);
  EXPECT_DOUBLE_EQ(report.files_per_second(), 2.0);
  EXPECT_DOUBLE_EQ(report.megabytes_per_second(), 0.002);
  const auto empty = build_mode_report("content", "d", {});
  EXPECT_DOUBLE_EQ(empty.files_per_second(), 0.0);
  EXPECT_DOUBLE_EQ(empty.language_accuracy(), 0.0);
}

}  // namespace
}  // namespace quillon::lingomat::tools
