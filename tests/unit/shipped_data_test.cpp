// The engine against the reference on the shipped data file: real sources, random texts and
// hostile shapes; and hostile shapes too large for the reference, against the token list.
#include <algorithm>
#include <filesystem>

#include "differential.h"
#include "sample_texts.h"

namespace quillon::lingomat {
namespace {

class ShippedDataFile : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!std::filesystem::exists(LINGOMAT_TEST_DATA)) return;
    defaults_ =
        new EnginePair(make_pair(LINGOMAT_TEST_DATA, defaults::kMaxBytes, defaults::kMaxTokens,
                                 defaults::kMinTokens, defaults::kMinScorePerToken));
    relaxed_ = new EnginePair(make_pair(LINGOMAT_TEST_DATA, 0, 0, 0, 0.0));
  }
  static void TearDownTestSuite() {
    delete defaults_;
    delete relaxed_;
  }
  void SetUp() override {
    if (defaults_ == nullptr) GTEST_SKIP() << "no data file at " << LINGOMAT_TEST_DATA;
  }
  static EnginePair* defaults_;
  static EnginePair* relaxed_;
};
EnginePair* ShippedDataFile::defaults_ = nullptr;
EnginePair* ShippedDataFile::relaxed_ = nullptr;

TEST_F(ShippedDataFile, RepositorySources) {
  const auto files = test_support::repository_files(LINGOMAT_TEST_SOURCE_DIR, 120);
  ASSERT_GT(files.size(), 50u);
  for (const auto& [name, text] : files) {
    expect_same(*defaults_, name, text);
    expect_same(*relaxed_, name, text.substr(0, 6000));  // unlimited: keep the regexes shallow
  }
}

TEST_F(ShippedDataFile, RandomTexts) {
  for (const std::string& text : test_support::random_texts(200, 1500, 20261122)) {
    expect_same(*defaults_, "x.c", text);
    expect_same(*relaxed_, "x.h", text);
  }
}

TEST_F(ShippedDataFile, HostileTexts) {
  for (const auto& [shape, text] : test_support::hostile_texts(3000)) {
    SCOPED_TRACE(shape);
    expect_same(*defaults_, "x.html", text);
    expect_same(*relaxed_, "", text);
  }
}

// More distinct known tokens than scoring keeps rows for: the rest are built per chunk.
TEST_F(ShippedDataFile, ManyDistinctKnownTokens) {
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

// A quarter megabyte of each hostile shape, too much for the reference: the streamed scoring
// must rank as the classifier ranks the plain token list.
TEST_F(ShippedDataFile, LargeHostileTextsScoreLikeTheirTokenList) {
  Lingomat::Opts opts = defaults_->engine->opts();
  opts.classifier.min_tokens = 1;
  const Lingomat engine(opts);
  for (const auto& [shape, text] : test_support::hostile_texts(256 * 1024)) {
    SCOPED_TRACE(shape);
    const std::vector<std::string> tokens = engine.tokenizer().extract_tokens(text);
    Ranking expected = engine.classifier().classify(tokens, engine.classifier().languages());
    expected.erase(std::remove_if(expected.begin(), expected.end(),
                                  [&](const auto& entry) {
                                    return -8.0 > entry.second / static_cast<double>(tokens.size());
                                  }),
                   expected.end());
    EXPECT_TRUE(same_ranking(engine.identify_by_classifier(text, {}), expected));
  }
}

}  // namespace
}  // namespace quillon::lingomat
