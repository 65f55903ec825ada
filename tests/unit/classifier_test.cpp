#include "classify/classifier.h"

#include <gtest/gtest.h>

#include <cmath>

#include "json/json_exception.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::TempFile;

// A: 2 samples, tokens x×3 y×1; B: 1 sample, tokens y×2. Six tokens, three samples in all.
const char* const kTwoLanguages = R"({
  "languages": {"A": 2, "B": 1},
  "language_tokens": {"A": 4, "B": 2},
  "tokens": {"A": {"x": 3, "y": 1}, "B": {"y": 2}},
  "tokens_total": 6,
  "languages_total": 3
})";

Classifier load(const std::string& json, std::uint64_t min_tokens = 0,
                std::uint64_t max_results = 0) {
  TempFile file(json);
  Classifier::Opts opts;
  opts.data_file = file.path();
  opts.min_tokens = min_tokens;
  opts.max_results = max_results;
  return Classifier(opts);
}

std::string load_error(const std::string& json) {
  try {
    load(json);
  } catch (const JsonException& e) {
    return e.what();
  }
  return "no error";
}

std::vector<std::string> repeat(const std::string& token, std::size_t n) {
  return std::vector<std::string>(n, token);
}

TEST(ClassifierLoad, MissingFileRaisesStreamFailure) {
  Classifier::Opts opts;
  opts.data_file = "/nonexistent/lingomat.json";
  EXPECT_THROW(Classifier{opts}, std::ios_base::failure);
}

TEST(ClassifierLoad, RejectsMalformedStatistics) {
  EXPECT_EQ(load_error("[]"), "Expected JSON value to be an object");
  EXPECT_EQ(load_error(R"({"tokens": {}, "languages": {}})"), "JSON object missing expected key");
  EXPECT_EQ(load_error(R"({"language_tokens": [], "tokens": {}, "languages": {}})"),
            "JSON value was of an unexpected type");
  // A language without its token object.
  EXPECT_EQ(load_error(R"({"language_tokens": {"Foo": 1}, "tokens": {}, "languages": {"Foo": 3},
                          "tokens_total": 1, "languages_total": 3})"),
            "JSON object missing expected key");
  EXPECT_EQ(load_error(R"({"language_tokens": {"Foo": 1}, "tokens": {"Foo": []},
                          "languages": {"Foo": 3}, "tokens_total": 1, "languages_total": 3})"),
            "JSON value was of an unexpected type");
  EXPECT_EQ(load_error(R"({"language_tokens": {"Foo": 2.0}, "tokens": {"Foo": {}},
                          "languages": {"Foo": 3}, "tokens_total": 1, "languages_total": 3})"),
            "JSON value was of an unexpected type");
  EXPECT_EQ(load_error(R"({"language_tokens": {"Foo": 2}, "tokens": {"Foo": {"t": "1"}},
                          "languages": {"Foo": 3}, "tokens_total": 1, "languages_total": 3})"),
            "JSON value was of an unexpected type");
  EXPECT_EQ(load_error(R"({"language_tokens": {}, "tokens": {}, "languages": {},
                          "tokens_total": 1})"),
            "JSON object missing expected key");
  EXPECT_EQ(load_error(R"({"language_tokens": {}, "tokens": {}, "languages": {},
                          "tokens_total": 1, "languages_total": 1.5})"),
            "JSON value was of an unexpected type");
}

TEST(ClassifierLoad, EmptyLanguageSetLoadsAndRanksNothing) {
  const Classifier classifier = load(R"({"language_tokens": {}, "tokens": {}, "languages": {},
                                         "tokens_total": 0, "languages_total": 0})");
  EXPECT_TRUE(classifier.languages().empty());
  EXPECT_TRUE(classifier.classify({"x"}, {"A"}).empty());
}

TEST(ClassifierLoad, LanguagesAreInByteOrderAndOnlyThoseWithSamples) {
  const Classifier classifier = load(R"({
    "languages": {"b": 1, "B": 1, "a": 1},
    "language_tokens": {"a": 1, "b": 1, "B": 1, "Ghost": 1},
    "tokens": {"a": {}, "b": {}, "B": {}, "Ghost": {}},
    "tokens_total": 3, "languages_total": 3})");
  EXPECT_EQ(classifier.languages(), (std::vector<std::string>{"B", "a", "b"}));
  EXPECT_EQ(classifier.language_resident_c_str("Ghost"), nullptr);
}

TEST(ClassifierLoad, NegativeCountsWrapInsteadOfFailing) {
  // With samples(A) = 2^64 - 1 the prior is ln((2^64 - 1) / 1).
  const Classifier classifier = load(R"({"languages": {"A": -1}, "language_tokens": {"A": 1},
    "tokens": {"A": {}}, "tokens_total": 1, "languages_total": 1})");
  EXPECT_DOUBLE_EQ(classifier.language_probability("A"), std::log(18446744073709551615.0));
}

TEST(ClassifierLoad, RepeatedEntriesFollowTheirLookupRules) {
  // The last "A" in "languages" wins; inner look-ups find the first member of a name;
  // a token repeated inside one language keeps its last count.
  const Classifier classifier = load(R"({
    "languages": {"A": 1, "A": 3},
    "language_tokens": {"A": 8, "A": 100},
    "tokens": {"A": {"t": 1, "t": 4}, "A": {"t": 50}},
    "tokens_total": 8, "languages_total": 4})");
  EXPECT_DOUBLE_EQ(classifier.language_probability("A"), std::log(3.0 / 4.0));
  EXPECT_DOUBLE_EQ(classifier.tokens_probability({"t"}, "A"), std::log(4.0 / 8.0));
}

TEST(ClassifierNames, ResidentPointersAreStableAndCaseSensitive) {
  const Classifier classifier = load(kTwoLanguages);
  const char* first = classifier.language_resident_c_str("A");
  ASSERT_NE(first, nullptr);
  EXPECT_STREQ(first, "A");
  EXPECT_EQ(classifier.language_resident_c_str(std::string("A")), first);
  classifier.classify({"x", "y"}, {"A", "B"});
  EXPECT_EQ(classifier.language_resident_c_str("A"), first);
  EXPECT_EQ(classifier.language_resident_c_str("a"), nullptr);
  EXPECT_EQ(classifier.language_resident_c_str(""), nullptr);
}

TEST(ClassifierScores, MatchHandComputedValues) {
  const Classifier classifier = load(kTwoLanguages);
  // A: 3/4 · 1/4 · 1/6 (z unseen) · 2/3 = 1/48.  B: 1/6 (x unseen) · 2/2 · 1/6 · 1/3 = 1/108.
  const Ranking ranking = classifier.classify({"x", "y", "z"}, {"B", "A"});
  ASSERT_EQ(ranking.size(), 2u);
  EXPECT_EQ(ranking[0].first, "A");
  EXPECT_NEAR(ranking[0].second, std::log(1.0 / 48.0), 1e-12);
  EXPECT_EQ(ranking[1].first, "B");
  EXPECT_NEAR(ranking[1].second, std::log(1.0 / 108.0), 1e-12);
}

TEST(ClassifierScores, RepeatedTokensAddUpInTextOrderExactly) {
  const Classifier classifier = load(kTwoLanguages);
  const std::vector<std::string> tokens{"x", "z", "y", "x", "x", "z", "y", "x"};
  double expected = 0.0;
  for (const std::string& token : tokens) {
    expected += token == "x"   ? std::log(3.0 / 4.0)
                : token == "y" ? std::log(1.0 / 4.0)
                               : std::log(1.0 / 6.0);
  }
  EXPECT_EQ(classifier.tokens_probability(tokens, "A"), expected);
  const Ranking ranking = classifier.classify(tokens, {"A"});
  ASSERT_EQ(ranking.size(), 1u);
  EXPECT_EQ(ranking[0].second, expected + std::log(2.0 / 3.0));
}

TEST(ClassifierScores, EmptyTokenListScoresThePriorOnly) {
  const Classifier classifier = load(kTwoLanguages);
  EXPECT_EQ(classifier.tokens_probability({}, "A"), 0.0);
  const Ranking ranking = classifier.classify({}, {"A", "B"});
  ASSERT_EQ(ranking.size(), 2u);
  EXPECT_DOUBLE_EQ(ranking[0].second, std::log(2.0 / 3.0));
  EXPECT_DOUBLE_EQ(ranking[1].second, std::log(1.0 / 3.0));
}

TEST(ClassifierScores, UnseenTokenShiftsEveryLanguageEqually) {
  const Classifier classifier = load(kTwoLanguages);
  const Ranking before = classifier.classify({"y"}, {"A", "B"});
  const Ranking after = classifier.classify({"y", "never-seen"}, {"A", "B"});
  ASSERT_EQ(before.size(), 2u);
  ASSERT_EQ(after.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(after[i].first, before[i].first);
    EXPECT_NEAR(after[i].second - before[i].second, std::log(1.0 / 6.0), 1e-12);
  }
}

TEST(ClassifierScores, UnknownLanguageThrowsMapAtEvenForNoTokens) {
  const Classifier classifier = load(kTwoLanguages);
  EXPECT_THROW(classifier.tokens_probability({}, "C"), std::out_of_range);
  try {
    classifier.language_probability("C");
    FAIL() << "unknown language accepted";
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "map::at");
  }
}

TEST(ClassifierRanking, MinTokensBoundary) {
  const Classifier classifier = load(kTwoLanguages, 40);
  EXPECT_TRUE(classifier.classify({}, {"A"}).empty());
  EXPECT_TRUE(classifier.classify(repeat("x", 39), {"A"}).empty());
  EXPECT_EQ(classifier.classify(repeat("x", 40), {"A"}).size(), 1u);
}

TEST(ClassifierRanking, UnknownNamesDroppedAndDuplicatesKept) {
  const Classifier classifier = load(kTwoLanguages);
  EXPECT_TRUE(classifier.classify({"x"}, {"C", "a"}).empty());
  const Ranking ranking = classifier.classify({"y"}, {"B", "C", "B"});
  ASSERT_EQ(ranking.size(), 2u);
  EXPECT_EQ(ranking[0], ranking[1]);
  EXPECT_EQ(ranking[0].first, "B");
}

TEST(ClassifierRanking, MaxResultsKeepsTheBest) {
  const char* const five = R"({
    "languages": {"L1": 1, "L2": 2, "L3": 3, "L4": 4, "L5": 5},
    "language_tokens": {"L1": 1, "L2": 1, "L3": 1, "L4": 1, "L5": 1},
    "tokens": {"L1": {}, "L2": {}, "L3": {}, "L4": {}, "L5": {}},
    "tokens_total": 5, "languages_total": 15})";
  const std::vector<std::string> all{"L1", "L2", "L3", "L4", "L5"};
  const Ranking top = load(five, 0, 2).classify({}, all);
  ASSERT_EQ(top.size(), 2u);
  EXPECT_EQ(top[0].first, "L5");
  EXPECT_EQ(top[1].first, "L4");
  const Ranking every = load(five, 0, 0).classify({}, all);
  ASSERT_EQ(every.size(), 5u);
  for (std::size_t i = 1; i < every.size(); ++i) EXPECT_GE(every[i - 1].second, every[i].second);
}

TEST(ClassifierRanking, ZeroCountsGiveNonFiniteScoresWithoutCrashing) {
  const Classifier classifier = load(R"({
    "languages": {"Z": 0, "N": 1, "P": 1},
    "language_tokens": {"Z": 0, "N": 0, "P": 1},
    "tokens": {"Z": {"t": 0}, "N": {"t": 0}, "P": {"t": 1}},
    "tokens_total": 0, "languages_total": 0})");
  const Ranking ranking = classifier.classify(repeat("t", 50), {"Z", "N", "P", "Z", "N", "P"});
  EXPECT_EQ(ranking.size(), 6u);
}

// Zero counts in the data give every kind of non-finite score: plus infinity (a seen token
// of a language with no tokens), minus infinity (a token stored with count 0) and NaN (both).
// Plus infinity ranks first, minus infinity after every finite score, and NaN last, whatever
// order the candidates come in.
TEST(ClassifierRanking, NonFiniteScoresLandInAFixedPlace) {
  const Classifier classifier = load(R"({
    "languages": {"Finite": 1, "MinusInf": 1, "PlusInf": 1, "NaN": 1},
    "language_tokens": {"Finite": 1, "MinusInf": 1, "PlusInf": 0, "NaN": 0},
    "tokens": {"Finite": {"t": 1}, "MinusInf": {"t": 0}, "PlusInf": {"t": 1}, "NaN": {"t": 0}},
    "tokens_total": 2, "languages_total": 4})");
  const std::vector<std::vector<std::string>> orders{
      {"NaN", "MinusInf", "Finite", "PlusInf"},
      {"PlusInf", "NaN", "Finite", "MinusInf"},
      {"Finite", "NaN", "MinusInf", "PlusInf", "NaN"},
  };
  for (const auto& order : orders) {
    const Ranking ranking = classifier.classify(repeat("t", 3), order);
    ASSERT_EQ(ranking.size(), order.size());
    EXPECT_EQ(ranking[0].first, "PlusInf");
    EXPECT_TRUE(std::isinf(ranking[0].second) && ranking[0].second > 0);
    EXPECT_EQ(ranking[1].first, "Finite");
    EXPECT_TRUE(std::isfinite(ranking[1].second));
    EXPECT_EQ(ranking[2].first, "MinusInf");
    EXPECT_TRUE(std::isinf(ranking[2].second) && ranking[2].second < 0);
    for (std::size_t i = 3; i < ranking.size(); ++i) {
      EXPECT_EQ(ranking[i].first, "NaN");
      EXPECT_TRUE(std::isnan(ranking[i].second));
    }
  }
}

}  // namespace
}  // namespace quillon::lingomat
