// The evaluator's tallies and its score traces.
#include <cmath>

#include <gtest/gtest.h>

#include "eval/eval_report.h"
#include "eval/score_trace.h"
#include "test_support.h"
#include "train/data_file_writer.h"

namespace quillon::lingomat::tools {
namespace {

ModeReport report_of(const std::vector<std::pair<std::string, std::string>>& expected_and_answer) {
  std::vector<Identification> list;
  for (const auto& [expected, answer] : expected_and_answer) {
    list.push_back({expected, answer, 0.5, 1000});
  }
  return build_mode_report("content", "d", list);
}

TEST(EvalReportTest, CountsWrongAndNoAnswerApartAndListsConfusionsMostFrequentFirst) {
  const auto report = report_of({{"C", "C"},
                                 {"C", "C++"},
                                 {"C", ""},
                                 {"C", "C"},
                                 {"C", "Obj-C"},
                                 {"C", "C++"},
                                 {"C", "Obj-C"},
                                 {"Go", "Go"},
                                 {"Go", ""}});
  EXPECT_EQ(report.files, 9u);
  EXPECT_EQ(report.correct, 3u);
  EXPECT_EQ(report.wrong, 4u);
  EXPECT_EQ(report.no_answer, 2u);
  ASSERT_EQ(report.languages.size(), 2u);
  const LanguageReport& c = report.languages[0];
  EXPECT_EQ(std::make_tuple(c.language, c.files, c.correct, c.wrong, c.no_answer),
            std::make_tuple(std::string("C"), 7u, 2u, 4u, 1u));
  EXPECT_EQ(c.mistaken_for, "C++");  // tie broken by name
  EXPECT_EQ(c.mistaken_for_count, 2u);
  EXPECT_EQ(report.languages[1].mistaken_for, "");  // no answer is not a mistake
  // (2/7 + 1/2) / 2: every language weighs the same.
  EXPECT_DOUBLE_EQ(report.language_accuracy(), (2.0 / 7 + 0.5) / 2);
  ASSERT_EQ(report.confusions.size(), 2u);
  EXPECT_EQ(report.confusions[0].answer, "C++");  // ties by names
  EXPECT_EQ(report.confusions[1].answer, "Obj-C");
  EXPECT_EQ(report_of({{"Perl", "Raku"}, {"C", "C++"}, {"Perl", "Raku"}}).confusions[0].expected,
            "Perl");
  // Throughput counts engine time only.
  EXPECT_DOUBLE_EQ(report.files_per_second(), 2.0);
  EXPECT_DOUBLE_EQ(report.megabytes_per_second(), 0.002);
  EXPECT_DOUBLE_EQ(report_of({}).files_per_second(), 0.0);
}

// The trace splits each candidate's score in two; put together they must give the engine's.
TEST(ScoreTraceTest, RebuildsTheEnginesScoresAndKeepsTheFallback) {
  const std::vector<LanguageDefinition> languages = {{"C", 1, {".c", ".h"}, {}, {}},
                                                     {"C++", 2, {".cpp", ".h"}, {}, {}},
                                                     {"Markdown", 3, {".md", ".h"}, {}, {}}};
  std::vector<LanguageStatistics> statistics(3);
  const Tokenizer tokenizer(Tokenizer::Opts{});
  add_sample(tokenizer.extract_tokens("int main() { }"), statistics[0]);
  add_sample(tokenizer.extract_tokens("template <class T> int f();"), statistics[1]);
  const test_support::TempFile data(render_data_file(languages, statistics, {1, 1000}));
  Lingomat::Opts opts;
  opts.classifier.data_file = data.path();
  const Lingomat engine(opts);

  const std::string text = "int main() { return zero; }";
  const auto tokens = engine.tokenizer().extract_tokens(text);
  const ScoreTrace trace = trace_scores(engine, "content", "C", "", text);
  EXPECT_EQ(trace.fallback, "");
  EXPECT_EQ(trace.tokens, tokens.size());
  ASSERT_EQ(trace.candidates.size(), 2u);  // Markdown has no statistics
  for (const CandidateScore& candidate : trace.candidates) {
    const double score = engine.classifier().tokens_probability(tokens, candidate.language) +
                         engine.classifier().language_probability(candidate.language);
    EXPECT_NEAR(candidate.seen_score + double(candidate.unseen_tokens) * std::log(1.0 / 1000),
                score, 1e-9)
        << candidate.language;
  }
  EXPECT_EQ(trace.candidates[0].language, "C");
  EXPECT_EQ(trace.candidates[0].unseen_tokens, 3u);  // "return", "zero" and ";"

  const ScoreTrace named = trace_scores(engine, "filename", "C++", "x.h", "template <class T>");
  EXPECT_EQ(named.fallback, "C");
  ASSERT_EQ(named.candidates.size(), 2u);
  EXPECT_EQ(named.candidates[1].language, "C++");
  EXPECT_EQ(named.candidates[1].unseen_tokens, 0u);
  const std::string lines = format_score_traces({named});
  EXPECT_EQ(lines.substr(0, lines.find('\n')), "mode\texpected\tfallback\ttokens\tcandidates");
  EXPECT_NE(lines.find("\nfilename\tC++\tC\t" + std::to_string(named.tokens) + "\tC="),
            std::string::npos)
      << lines;
}

}  // namespace
}  // namespace quillon::lingomat::tools
