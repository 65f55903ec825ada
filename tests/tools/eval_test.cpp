// The evaluator's score traces, which the calibration sweep replays offline.
#include <cmath>

#include <gtest/gtest.h>

#include "eval/score_trace.h"
#include "test_support.h"
#include "train/data_file_writer.h"

namespace quillon::lingomat::tools {
namespace {

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
  EXPECT_EQ(named.candidates[1].unseen_tokens, 0u);  // C++
  const std::string lines = format_score_traces({named});
  EXPECT_EQ(lines.substr(0, lines.find('\n')), "mode\texpected\tfallback\ttokens\tcandidates");
  EXPECT_NE(lines.find("\nfilename\tC++\tC\t" + std::to_string(named.tokens) + "\tC="),
            std::string::npos)
      << lines;
}

}  // namespace
}  // namespace quillon::lingomat::tools
