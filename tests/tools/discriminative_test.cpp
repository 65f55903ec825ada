#include "train/discriminative.h"

#include <cmath>

#include <gtest/gtest.h>

#include "check/data_file_check.h"
#include "classify/classifier.h"
#include "test_support.h"
#include "train/data_file_writer.h"

namespace quillon::lingomat::tools {
namespace {

// Two languages of three projects each. Every "Wide" sample is four "c" among 20 words
// of its own, so "c" is rare in Wide's large vocabulary; every "Narrow" sample is four
// "c" and one "t". Naive Bayes ranks a Wide file of a new project Narrow (its new words
// cost both languages the same, and "c" is likelier in Narrow); a perceptron learns
// that four "c" among unknown words are Wide while "t" still marks Narrow.
struct TwoLanguages {
  std::vector<LanguageDefinition> languages;
  std::vector<LanguageStatistics> statistics;
  std::vector<SampleTokens> samples;

  TwoLanguages() {
    languages.push_back({"Wide", 1, {".w"}, {}, {}});
    languages.push_back({"Narrow", 2, {".n"}, {}, {}});
    statistics.resize(2);
    for (int project = 0; project < 3; ++project) {
      std::vector<std::string> wide(4, "c");
      for (int word = 0; word < 20; ++word) {
        wide.push_back("w" + std::to_string(project) + "_" + std::to_string(word));
      }
      add(0, "wide" + std::to_string(project), wide);
      add(1, "narrow" + std::to_string(project), {"c", "c", "c", "c", "t"});
    }
  }

  void add(std::size_t language, const std::string& project,
           const std::vector<std::string>& tokens) {
    add_sample(tokens, statistics[language]);
    SampleTokens sample;
    sample.language = language;
    sample.project = project;
    std::map<std::string, std::uint64_t> counts;
    for (const std::string& token : tokens) ++counts[token];
    sample.tokens.assign(counts.begin(), counts.end());
    sample.counted = tokens.size();
    samples.push_back(sample);
  }
};

std::string top_language(const std::string& json, const std::vector<std::string>& tokens) {
  test_support::TempDir dir;
  test_support::write_text(dir / "data.json", json);
  Classifier::Opts opts;
  opts.data_file = dir / "data.json";
  opts.min_tokens = 0;
  return Classifier(opts).classify(tokens, {"Wide", "Narrow"}).at(0).first;
}

std::vector<std::string> new_wide_file() {
  std::vector<std::string> tokens = {"c", "c", "c", "c"};
  for (int word = 0; word < 20; ++word) tokens.push_back("new" + std::to_string(word));
  return tokens;
}

TEST(DiscriminativeTest, PerceptronFixesWhatNaiveBayesRanksWrong) {
  const TwoLanguages set;
  const Calibration calibration{1, 1000};
  const std::string counted = render_data_file(set.languages, set.statistics, calibration);
  ASSERT_EQ(top_language(counted, new_wide_file()), "Narrow");

  DiscriminativeConfig config;
  config.epochs = 20;
  config.rate = 2;
  DiscriminativeReport report;
  const auto adjusted =
      train_discriminatively(set.statistics, calibration, set.samples, config, report);
  EXPECT_EQ(report.samples, 6u);
  ASSERT_EQ(report.errors.size(), 21u);
  EXPECT_EQ(report.errors.front(), 3u);  // every Wide sample, with its project left out
  EXPECT_EQ(report.errors.back(), 0u);

  const std::string json =
      render_data_file(set.languages, adjusted, calibration, {config.epochs, "2", "0", 78});
  require_valid_data_file(json, "adjusted.json");
  EXPECT_EQ(top_language(json, new_wide_file()), "Wide");
  EXPECT_EQ(top_language(json, {"c", "c", "c", "c", "t"}), "Narrow");
}

TEST(DiscriminativeTest, WithoutErrorsTheCountedWeightsAreKeptWithinResolution) {
  // Every sample of each language shares its words with the others: nothing to correct.
  std::vector<LanguageStatistics> statistics(2);
  std::vector<SampleTokens> samples;
  for (int project = 0; project < 3; ++project) {
    for (std::size_t language = 0; language < 2; ++language) {
      const std::vector<std::string> tokens =
          language == 0 ? std::vector<std::string>{"int", "int", "main", ";"}
                        : std::vector<std::string>{"def", "self", "self", ":"};
      add_sample(tokens, statistics[language]);
      SampleTokens sample;
      sample.language = language;
      sample.project = "p" + std::to_string(project);
      sample.counted = tokens.size();
      std::map<std::string, std::uint64_t> counts;
      for (const std::string& token : tokens) ++counts[token];
      sample.tokens.assign(counts.begin(), counts.end());
      samples.push_back(sample);
    }
  }
  const Calibration calibration{3, 500};
  DiscriminativeConfig config;
  config.epochs = 2;
  DiscriminativeReport report;
  const auto adjusted = train_discriminatively(statistics, calibration, samples, config, report);
  EXPECT_EQ(report.errors, (std::vector<std::size_t>{0, 0, 0}));
  for (std::size_t language = 0; language < 2; ++language) {
    for (const auto& [token, count] : statistics[language].counts) {
      const double intended = std::log(3.0 * double(count) / double(statistics[language].tokens));
      const double written =
          std::log(double(adjusted[language].counts.at(token)) / double(adjusted[language].tokens));
      // Counts are rounded at a resolution of 1/200.
      EXPECT_NEAR(written, intended, 6e-3) << token;
    }
  }
}

TEST(DiscriminativeTest, WeightsAreEncodedWithTheAskedResolution) {
  // The smallest weight gets a count of at least the resolution where 32 bits allow.
  const std::uint64_t total = total_for_weights(-10.0, 0.5, 1000.0);
  EXPECT_GE(count_for_weight(-10.0, total), 1000u);
  for (const double weight : {-10.0, -7.25, -3.0, -0.5, 0.0, 0.5}) {
    const std::uint64_t count = count_for_weight(weight, total);
    EXPECT_LE(count, 2147483647u);
    EXPECT_NEAR(std::log(double(count) / double(total)), weight, 1e-3) << weight;
  }
  // The largest weight must fit: a large one leaves less room for the smallest.
  const std::uint64_t tight = total_for_weights(-10.0, 12.0, 1000.0);
  EXPECT_LE(count_for_weight(12.0, tight), 2147483647u);
  EXPECT_NEAR(std::log(double(count_for_weight(12.0, tight)) / double(tight)), 12.0, 1e-6);
  // Too small to resolve: a count of at least 1.
  EXPECT_EQ(total_for_weights(-40.0, -40.0, 1000.0), 2147483647u);
  EXPECT_EQ(count_for_weight(-40.0, 2147483647u), 1u);
}

}  // namespace
}  // namespace quillon::lingomat::tools
