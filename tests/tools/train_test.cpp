// The trainer's counts, weights and data files, and the evaluator's traces, against the engine.
#include <cmath>

#include <rapidjson/document.h>

#include <gtest/gtest.h>

#include "check/data_file_check.h"
#include "classify/classifier.h"
#include "common/tool_error.h"
#include "eval/score_trace.h"
#include "test_support.h"
#include "train/class_prior.h"
#include "train/data_file_writer.h"
#include "train/discriminative.h"
#include "train/token_statistics.h"

namespace quillon::lingomat::tools {
namespace {

using Counts = std::map<std::string, std::uint64_t>;
using Tokens = std::vector<std::string>;

// What the trainer sums from samples given as (language, tokens).
std::vector<LanguageStatistics> tally(const std::vector<std::pair<std::size_t, Tokens>>& samples,
                                      std::size_t languages, std::uint64_t max_repeats = 0) {
  std::vector<SampleTokens> counted;
  for (const auto& [language, tokens] : samples) {
    counted.push_back(count_sample(tokens, max_repeats));
    counted.back().language = language;
  }
  return tally_samples(counted, languages);
}

TEST(TokenStatisticsTest, CountsValidTokensAtMostMaxRepeatsTimesAndPrunesKeepingTheTotal) {
  const auto statistics = tally({{0, {"int", "x", ";", "int"}},
                                 {0, {}},
                                 {1, {"a", "a", "a"}},
                                 {0, {"caf\xC3\xA9", "\xE9", "\xE9"}},
                                 {1, {"a", "b", "b"}}},
                                2, 2);
  EXPECT_EQ(statistics[0].samples, 3u);
  EXPECT_EQ(statistics[0].tokens, 5u);
  EXPECT_EQ(statistics[0].invalid_tokens, 2u);  // Latin-1 cannot be stored
  EXPECT_EQ(statistics[0].counts, (Counts{{";", 1}, {"caf\xC3\xA9", 1}, {"int", 2}, {"x", 1}}));
  EXPECT_EQ(statistics[1].counts, (Counts{{"a", 3}, {"b", 2}}));
  EXPECT_EQ(statistics[1].tokens, 5u);  // the divisor counts what was kept

  LanguageStatistics pruned =
      tally({{0, {"a", "a", "a", "b", "b", "c", "d", "d", "parse_config", "render_tree"}}}, 1)[0];
  EXPECT_EQ(long_singletons(pruned, 4), (Tokens{"parse_config", "render_tree"}));
  drop_tokens(pruned, long_singletons(pruned, 4));
  prune_tokens(pruned, 2, 0);
  EXPECT_EQ(pruned.counts, (Counts{{"a", 3}, {"b", 2}, {"d", 2}}));
  EXPECT_EQ(pruned.tokens, 10u);
  EXPECT_EQ(pruned.pruned_tokens, 3u);
  // Keeping two: "a" is most frequent; "b" beats "d" on bytes at equal counts.
  prune_tokens(pruned, 1, 2);
  EXPECT_EQ(pruned.counts, (Counts{{"a", 3}, {"b", 2}}));
}

// The engine's best language for `tokens` among `languages`, from the data file `json`.
std::pair<std::string, double> best(const std::string& json, const Tokens& tokens,
                                    const Tokens& languages) {
  const test_support::TempFile file(json);
  Classifier::Opts opts;
  opts.data_file = file.path();
  opts.min_tokens = 0;
  return Classifier(opts).classify(tokens, languages).at(0);
}

struct Example {
  std::vector<LanguageDefinition> languages = {{"C", 1, {".c", ".h"}, {}, {"tcc"}},
                                               {"Markdown", 4, {".md"}, {"README.md"}, {}},
                                               {"C++", 6, {".cpp", ".h"}, {}, {}}};
  std::vector<LanguageStatistics> statistics =
      tally({{0, {"int", "main", "(", ")", "int"}},
             {0, {"caf\xC3\xA9", std::string("nul\0byte", 8)}},
             {2, {"template", "<", "int", ">"}}},
            3);
  std::string error(Calibration calibration = {}) const {
    try {
      render_data_file(languages, statistics, calibration);
    } catch (const ToolError& error) {
      return error.what();
    }
    return "";
  }
};

// Totals that add up are the check's to prove: the trainer runs it on what it writes.
TEST(DataFileWriterTest, KeepsTokenBytesAndNameOrderAndCalibratesAsRecorded) {
  const Example example;
  const std::string json = render_data_file(example.languages, example.statistics);
  rapidjson::Document document;
  document.Parse<rapidjson::kParseValidateEncodingFlag>(json.c_str(), json.size());
  ASSERT_FALSE(document.HasParseError()) << json;
  EXPECT_EQ(document["tokens"]["C"]["int"].GetInt(), 2);
  EXPECT_TRUE(document["tokens"]["C"].HasMember(rapidjson::Value("nul\0byte", 8)));
  for (const char* key : {"languages", "language_tokens", "tokens", "filenames"}) {
    EXPECT_NE(document[key].HasMember("Markdown"), document[key].HasMember("C")) << key;
  }
  // The order decides the fallback among languages sharing ".h".
  std::string order;
  for (const auto& member : document["extnames"].GetObject()) order += member.name.GetString();
  EXPECT_EQ(order, "CMarkdownC++");

  const auto score = [&](Calibration calibration, const Tokens& tokens) {
    return best(render_data_file(example.languages, example.statistics, calibration), tokens, {"C"})
        .second;
  };
  // The count scale raises every token's score by its logarithm; tokens_total prices only
  // the tokens never seen.
  const Tokens tokens = {"int", "main", "never-seen", "(", "int"};
  EXPECT_NEAR(score({3, 300}, tokens) - score({1, 300}, tokens), 5 * std::log(3.0), 1e-9);
  EXPECT_DOUBLE_EQ(score({1, 100}, {"int", "main"}), score({1, 1000}, {"int", "main"}));
  EXPECT_NEAR(score({1, 100}, {"int", "x"}) - score({1, 1000}, {"int", "x"}), std::log(10.0), 1e-9);

  // Counts must fit the engine's signed 32 bits, scaled and summed.
  Example big;
  big.statistics[0].counts["int"] = big.statistics[0].tokens = 1ULL << 30;
  EXPECT_EQ(big.error({1, 0}), "");
  EXPECT_NE(big.error({4, 0}).find("times the count scale"), std::string::npos);
  big.statistics[2].tokens = (1ULL << 31) - big.statistics[0].tokens;
  EXPECT_NE(big.error().find("tokens_total is 2147483648"), std::string::npos);
}

// Two languages of three projects each. Every "Wide" sample is four "c" among 20 words
// of its own, so "c" is rare in Wide's large vocabulary; every "Narrow" sample is four
// "c" and one "t". Naive Bayes ranks a Wide file of a new project Narrow (its new words
// cost both languages the same, and "c" is likelier in Narrow); a perceptron learns
// that four "c" among unknown words are Wide while "t" still marks Narrow.
TEST(DiscriminativeTest, PerceptronFixesWhatNaiveBayesRanksWrong) {
  const std::vector<LanguageDefinition> languages = {{"Wide", 1, {".w"}, {}, {}},
                                                     {"Narrow", 2, {".n"}, {}, {}}};
  const auto wide_file = [](const std::string& stem) {
    Tokens tokens(4, "c");
    for (int word = 0; word < 20; ++word) tokens.push_back(stem + std::to_string(word));
    return tokens;
  };
  std::vector<SampleTokens> samples;
  for (int project = 0; project < 3; ++project) {
    for (const std::size_t language : {0, 1}) {
      samples.push_back(count_sample(
          language ? Tokens{"c", "c", "c", "c", "t"} : wide_file(std::to_string(project)), 0));
      samples.back().language = language;
      samples.back().project = std::to_string(language) + "-" + std::to_string(project);
    }
  }
  const auto statistics = tally_samples(samples, 2);
  const Calibration calibration{1, 1000};
  const Tokens both = {"Wide", "Narrow"};
  ASSERT_EQ(
      best(render_data_file(languages, statistics, calibration), wide_file("new"), both).first,
      "Narrow");

  // The logistic loss must fix it too, and the same run must give the same weights.
  using Loss = DiscriminativeConfig::Loss;
  std::string logistic_json;
  for (const Loss loss : {Loss::kPerceptron, Loss::kLogistic, Loss::kLogistic}) {
    SCOPED_TRACE(loss == Loss::kLogistic ? "logistic" : "perceptron");
    DiscriminativeReport report;
    const auto adjusted = train_discriminatively(statistics, calibration, samples,
                                                 {20, 2.0, 0.0, loss, 0.01}, report);
    ASSERT_EQ(report.errors.size(), 21u);
    EXPECT_EQ(report.errors.front(), 3u);  // every Wide sample, with its project left out
    EXPECT_EQ(report.errors.back(), 0u);
    const std::string json =
        render_data_file(languages, adjusted, calibration, {20, "2", "0", 78, ""});
    require_valid_data_file(json, "adjusted.json");
    EXPECT_EQ(best(json, wide_file("new"), both).first, "Wide");
    EXPECT_EQ(best(json, {"c", "c", "c", "c", "t"}, both).first, "Narrow");
    if (loss == Loss::kLogistic) {
      EXPECT_TRUE(logistic_json.empty() || json == logistic_json);
      logistic_json = json;
    }
  }
}

// The trace splits each candidate's score in two; put together they must give the engine's.
TEST(ScoreTraceTest, RebuildsTheEnginesScoresAndKeepsTheFallback) {
  const Example example;
  const test_support::TempFile data(
      render_data_file(example.languages, example.statistics, {1, 1000}));
  Lingomat::Opts opts;
  opts.classifier.data_file = data.path();
  const Lingomat engine(opts);
  std::vector<ScoreTrace> traces;
  for (const std::string name : {"", "x.h"}) {
    const std::string text = "int main() { return zero; }";
    traces.push_back(trace_scores(engine, name.empty() ? "content" : "filename", "C", name, text));
    EXPECT_EQ(traces.back().fallback, name.empty() ? "" : "C");
    ASSERT_EQ(traces.back().candidates.size(), 2u);  // Markdown has no statistics
    const auto tokens = engine.tokenizer().extract_tokens(text);
    for (const CandidateScore& candidate : traces.back().candidates) {
      EXPECT_NEAR(candidate.seen_score + double(candidate.unseen_tokens) * std::log(1.0 / 1000),
                  engine.classifier().tokens_probability(tokens, candidate.language) +
                      engine.classifier().language_probability(candidate.language),
                  1e-9)
          << candidate.language;
    }
  }
  const std::string lines = format_score_traces(traces);
  EXPECT_NE(lines.find("\nfilename\tC\tC\t" + std::to_string(traces[1].tokens) + "\tC="),
            std::string::npos)
      << lines;
}

TEST(ClassPrior, SharesReplaceSampleCountsOfTrainedLanguagesOnly) {
  // "C#" holds a '#': only a line that starts with one is a comment.
  const LanguageShares shares =
      parse_language_shares("# header\n27.62 C#\n 0.5\tGo \n\n1.25 Rust\n", "shares");
  EXPECT_EQ(shares, (LanguageShares{{"C#", 27.62}, {"Go", 0.5}, {"Rust", 1.25}}));

  std::vector<LanguageDefinition> languages;
  for (const char* name : {"C#", "Go", "Rust", "Zig"}) languages.emplace_back().name = name;
  std::vector<LanguageStatistics> statistics(4);
  statistics[0].samples = statistics[1].samples = statistics[3].samples = 200;
  statistics[0].tokens = 7;
  weight_priors_by_shares(languages, statistics, shares);
  EXPECT_EQ(statistics[0].samples, 2762u);
  EXPECT_EQ(statistics[1].samples, 50u);
  EXPECT_EQ(statistics[2].samples, 0u) << "untrained languages stay untrained";
  EXPECT_EQ(statistics[3].samples, 50u) << "unlisted: the smallest share";
  EXPECT_EQ(statistics[0].tokens, 7u);

  for (const char* bad : {"", "27.62\n", "x C\n", "0 C\n", "101 C\n", "1 C\n2 C\n", "1e400 C\n"}) {
    EXPECT_THROW(parse_language_shares(bad, "shares"), ToolError) << bad;
  }
  EXPECT_THROW(weight_priors_by_shares(languages, statistics, {{"Cobra", 1.0}}), ToolError);
}

}  // namespace
}  // namespace quillon::lingomat::tools
