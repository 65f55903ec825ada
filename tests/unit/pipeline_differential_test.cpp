// The engine against the straightforward implementation kept in tests/reference: the same
// tokens, the same answers and the same rankings, scores compared bit for bit.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <memory>

#include "engine/engine.h"
#include "reference_engine.h"
#include "sample_texts.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::TempFile;

std::uint64_t bits(double value) {
  std::uint64_t result;
  std::memcpy(&result, &value, sizeof result);
  return result;
}

// Equal names in equal order, and scores with equal bits (NaN included).
::testing::AssertionResult same_ranking(const Ranking& actual, const reference::Ranking& expected) {
  if (actual.size() != expected.size()) {
    return ::testing::AssertionFailure()
           << actual.size() << " entries instead of " << expected.size();
  }
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (actual[i].first != expected[i].first ||
        bits(actual[i].second) != bits(expected[i].second)) {
      return ::testing::AssertionFailure()
             << "entry " << i << ": " << actual[i].first << " " << actual[i].second
             << " instead of " << expected[i].first << " " << expected[i].second;
    }
  }
  return ::testing::AssertionSuccess();
}

struct Pair {
  std::unique_ptr<Lingomat> engine;
  std::unique_ptr<reference::Engine> expected;
};

Pair make_pair(const std::string& data_file, std::uint64_t max_bytes, std::uint64_t max_tokens,
               std::uint64_t min_tokens, double floor,
               const std::vector<std::string>& restrictions = {}) {
  Lingomat::Opts opts;
  opts.classifier.data_file = data_file;
  opts.tokenizer.max_bytes = max_bytes;
  opts.tokenizer.max_tokens = max_tokens;
  opts.classifier.min_tokens = min_tokens;
  opts.classifier.min_score_per_token = floor;
  opts.restrictions = restrictions;
  reference::EngineOpts reference_opts;
  reference_opts.data_file = data_file;
  reference_opts.tokenizer = {max_bytes, max_tokens};
  reference_opts.min_tokens = min_tokens;
  reference_opts.min_score_per_token = floor;
  reference_opts.restrictions = restrictions;
  return {std::make_unique<Lingomat>(opts), std::make_unique<reference::Engine>(reference_opts)};
}

// Tokens, answers with and without a name, and the ranking among every language.
void expect_same(const Pair& pair, const std::string& name, const std::string& text) {
  const auto& opts = pair.engine->opts().tokenizer;
  ASSERT_EQ(pair.engine->tokenizer().extract_tokens(text),
            reference::extract_tokens(text, {opts.max_bytes, opts.max_tokens}))
      << name;
  EXPECT_EQ(pair.engine->tokenizer().extract_shebang(text), reference::extract_shebang(text));
  EXPECT_EQ(pair.engine->identify("", text), pair.expected->identify("", text)) << name;
  EXPECT_EQ(pair.engine->identify(name, text), pair.expected->identify(name, text)) << name;
  EXPECT_TRUE(same_ranking(pair.engine->identify_by_classifier(text, {}),
                           pair.expected->identify_by_classifier(text, {})))
      << name;
}

class ShippedDataFile : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!std::filesystem::exists(LINGOMAT_TEST_DATA)) return;
    defaults_ = new Pair(make_pair(LINGOMAT_TEST_DATA, defaults::kMaxBytes, defaults::kMaxTokens,
                                   defaults::kMinTokens, defaults::kMinScorePerToken));
    relaxed_ = new Pair(make_pair(LINGOMAT_TEST_DATA, 0, 0, 0, 0.0));
  }
  static void TearDownTestSuite() {
    delete defaults_;
    delete relaxed_;
  }
  void SetUp() override {
    if (defaults_ == nullptr) GTEST_SKIP() << "no data file at " << LINGOMAT_TEST_DATA;
  }
  static Pair* defaults_;
  static Pair* relaxed_;
};
Pair* ShippedDataFile::defaults_ = nullptr;
Pair* ShippedDataFile::relaxed_ = nullptr;

TEST_F(ShippedDataFile, RepositorySourcesGiveTheSameResults) {
  const auto files = test_support::repository_files(LINGOMAT_TEST_SOURCE_DIR, 120);
  ASSERT_GT(files.size(), 50u);
  for (const auto& [name, text] : files) {
    expect_same(*defaults_, name, text);
    expect_same(*relaxed_, name, text.substr(0, 6000));  // unlimited: keep the regexes shallow
  }
}

TEST_F(ShippedDataFile, RandomTextsGiveTheSameResults) {
  for (const std::string& text : test_support::random_texts(200, 1500, 20261122)) {
    expect_same(*defaults_, "x.c", text);
    expect_same(*relaxed_, "x.h", text);
  }
}

TEST_F(ShippedDataFile, HostileTextsGiveTheSameResults) {
  for (const auto& [shape, text] : test_support::hostile_texts(3000)) {
    SCOPED_TRACE(shape);
    expect_same(*defaults_, "x.html", text);
    expect_same(*relaxed_, "", text);
  }
}

// More distinct known tokens than scoring keeps rows for: the rest are built per chunk.
TEST_F(ShippedDataFile, ManyDistinctKnownTokensScoreAlike) {
  const Classifier& classifier = defaults_->engine->classifier();
  const Vocabulary& vocabulary = classifier.vocabulary();
  ASSERT_GT(vocabulary.size(), 3000u);
  std::vector<std::string> tokens;
  for (std::uint32_t id = 0; id < 6000; ++id) {
    tokens.emplace_back(vocabulary.token(id % 3000 * (vocabulary.size() / 3000)));
  }
  const std::vector<std::string> languages = classifier.languages();
  EXPECT_TRUE(same_ranking(classifier.classify(tokens, languages),
                           defaults_->expected->classifier().classify(tokens, languages)));
}

// Duplicate languages and tokens, zero and negative counts: the odd data must score alike too.
const char* const kOddData = R"({
  "filenames": {"A": ["Afile"], "B": ["Afile"]},
  "extnames": {"A": [".a", ".x"], "B": [".x"], "C": [".x"], "Z": [".z"]},
  "interpreters": {"A": ["ash"], "C": ["csh"]},
  "languages": {"A": 3, "B": 1, "C": 2, "A": 5, "D": 0, "E": -1},
  "language_tokens": {"A": 9, "B": 4, "C": 6, "A": 1, "D": 0, "E": 7},
  "tokens": {
    "A": {"a": 2, "b": 3, "a": 4, "(": 1, ";": 0},
    "B": {"b": 1, "c": 3, "(": 2},
    "C": {"c": 2, "d": 3, "a": 1, ";": -2},
    "D": {"a": 1},
    "E": {"e": 7, "a": 0}},
  "tokens_total": 26,
  "languages_total": 11
})";

TEST(OddDataFile, ScoresKeepTheirBits) {
  TempFile file(kOddData);
  const std::vector<Pair> pairs = [&] {
    std::vector<Pair> result;
    result.push_back(make_pair(file.path(), 0, 0, 0, 0.0));
    result.push_back(make_pair(file.path(), 0, 0, 0, -3.0));
    result.push_back(make_pair(file.path(), 10, 4, 2, -8.0, {"C", "A", "Q"}));
    return result;
  }();
  const std::vector<std::string> texts = {"",      "a",         "a b c",           "a a a ( ; ;",
                                          "e e a", "c d d ( q", "#!/bin/csh\na b", "zz yy a"};
  for (const Pair& pair : pairs) {
    for (const std::string& text : texts) {
      for (const char* name : {"", "Afile", "f.x", "f.z", "f.a"}) expect_same(pair, name, text);
      const auto tokens = reference::extract_tokens(text, {0, 0});
      for (const std::vector<std::string>& languages :
           {std::vector<std::string>{"A", "C", "A", "nope", "E", "D", "B"},
            std::vector<std::string>{}, pair.engine->classifier().languages()}) {
        EXPECT_TRUE(same_ranking(pair.engine->classifier().classify(tokens, languages),
                                 pair.expected->classifier().classify(tokens, languages)))
            << text;
      }
    }
  }
}

}  // namespace
}  // namespace quillon::lingomat
