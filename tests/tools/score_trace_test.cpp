#include "eval/score_trace.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "test_support.h"
#include "train/data_file_writer.h"

namespace quillon::lingomat::tools {
namespace {

class ScoreTraceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<LanguageDefinition> languages = {{"C", 1, {".c", ".h"}, {}, {}},
                                                 {"C++", 2, {".cpp", ".h"}, {}, {}},
                                                 {"Markdown", 3, {".md", ".h"}, {}, {}}};
    std::vector<LanguageStatistics> statistics(3);
    const Tokenizer tokenizer(Tokenizer::Opts{});
    add_sample(tokenizer.extract_tokens("int main() { }"), statistics[0]);
    add_sample(tokenizer.extract_tokens("template <class T> int f();"), statistics[1]);
    test_support::write_text(dir_ / "data.json",
                             render_data_file(languages, statistics, {1, 1000}));
    Lingomat::Opts opts;
    opts.classifier.data_file = dir_ / "data.json";
    engine_ = std::make_unique<Lingomat>(opts);
  }

  // The engine's own score, rebuilt from the trace's two parts.
  static double rebuilt(const CandidateScore& candidate) {
    return candidate.seen_score + double(candidate.unseen_tokens) * std::log(1.0 / 1000.0);
  }

  test_support::TempDir dir_;
  std::unique_ptr<Lingomat> engine_;
};

TEST_F(ScoreTraceTest, ContentModeSplitsEveryLanguagesScoreExactly) {
  const std::string text = "int main() { return zero; }";
  const ScoreTrace trace = trace_scores(*engine_, "content", "C", "", text);
  EXPECT_EQ(trace.fallback, "");
  EXPECT_EQ(trace.tokens, engine_->tokenizer().extract_tokens(text).size());
  ASSERT_EQ(trace.candidates.size(), 2u);  // Markdown has no statistics
  const auto tokens = engine_->tokenizer().extract_tokens(text);
  for (const CandidateScore& candidate : trace.candidates) {
    const double score = engine_->classifier().tokens_probability(tokens, candidate.language) +
                         engine_->classifier().language_probability(candidate.language);
    EXPECT_NEAR(rebuilt(candidate), score, 1e-9) << candidate.language;
  }
  EXPECT_EQ(trace.candidates[0].language, "C");
  const auto seen_in_c = engine_->tokenizer().extract_tokens("int main() { }");
  std::uint64_t unseen = 0;
  for (const std::string& token : tokens) {
    unseen += std::find(seen_in_c.begin(), seen_in_c.end(), token) == seen_in_c.end();
  }
  EXPECT_GT(unseen, 0u);  // "return" and "zero" at least
  EXPECT_EQ(trace.candidates[0].unseen_tokens, unseen);
}

TEST_F(ScoreTraceTest, FileNameModeKeepsTheFallbackAndOnlyTheNamedCandidates) {
  const ScoreTrace trace = trace_scores(*engine_, "filename", "C++", "x.h", "template <class T>");
  EXPECT_EQ(trace.fallback, "C");
  ASSERT_EQ(trace.candidates.size(), 2u);  // Markdown is named but has no statistics
  EXPECT_EQ(trace.candidates[1].language, "C++");
  EXPECT_EQ(trace.candidates[1].unseen_tokens, 0u);
  EXPECT_GT(trace.candidates[0].unseen_tokens, 0u);

  const std::string lines = format_score_traces({trace});
  EXPECT_EQ(lines.substr(0, lines.find('\n')), "mode\texpected\tfallback\ttokens\tcandidates");
  const std::string row = "filename\tC++\tC\t" + std::to_string(trace.tokens) + "\tC=";
  EXPECT_NE(lines.find(row), std::string::npos) << lines;
}

}  // namespace
}  // namespace quillon::lingomat::tools
