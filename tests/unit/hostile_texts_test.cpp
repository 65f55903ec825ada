// Hostile shapes at a size the std::regex reference cannot follow: identification must give
// what the plain token list gives, and a tag's every token must count.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "engine/engine.h"
#include "sample_texts.h"

namespace quillon::lingomat {
namespace {

constexpr std::size_t kSize = 256 * 1024;

// The classifier strategy spelled out on the token list, the way the public pieces give it.
Ranking ranking_from_token_list(const Lingomat& engine, const std::string& text) {
  const std::vector<std::string> tokens = engine.tokenizer().extract_tokens(text);
  Ranking ranking = engine.classifier().classify(tokens, engine.classifier().languages());
  const double floor = engine.opts().classifier.min_score_per_token;
  ranking.erase(std::remove_if(ranking.begin(), ranking.end(),
                               [&](const auto& entry) {
                                 return floor > entry.second / static_cast<double>(tokens.size());
                               }),
                ranking.end());
  return ranking;
}

TEST(HostileTexts, IdentificationMatchesTheTokenList) {
  if (!std::filesystem::exists(LINGOMAT_TEST_DATA)) GTEST_SKIP() << "no data file";
  Lingomat::Opts opts;
  opts.classifier.data_file = LINGOMAT_TEST_DATA;
  opts.classifier.min_tokens = 1;
  const Lingomat engine(opts);
  for (const auto& [shape, text] : test_support::hostile_texts(kSize)) {
    SCOPED_TRACE(shape);
    const Ranking expected = ranking_from_token_list(engine, text);
    const Ranking actual = engine.identify_by_classifier(text, {});
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
      EXPECT_EQ(actual[i].first, expected[i].first);
      EXPECT_EQ(std::memcmp(&actual[i].second, &expected[i].second, sizeof(double)), 0);
    }
    if (engine.identify_by_shebang(text).empty()) {  // no candidates: every language ranked
      EXPECT_EQ(engine.identify("", text), expected.empty() ? "" : expected.front().first);
    }
  }
}

TEST(HostileTexts, EveryTokenOfOneHugeTagCounts) {
  const Tokenizer tokenizer({});  // default limits: the tag starts well inside them
  const std::string tag = "<a " + test_support::repeat("b ", kSize) + ">";
  const std::vector<std::string> tokens = tokenizer.extract_tokens(tag);
  ASSERT_EQ(tokens.size(), kSize + 1);
  EXPECT_EQ(tokens.front(), "<a>");
  EXPECT_EQ(tokens.back(), "b");

  // Distinct attribute names, more than scoring keeps rows for, still score like the list.
  std::string distinct = "<t ";
  for (std::size_t i = 0; i < 40000; ++i) distinct += "x" + std::to_string(i) + " ";
  distinct += ">";
  EXPECT_EQ(tokenizer.extract_tokens(distinct).size(), 40001u);
}

}  // namespace
}  // namespace quillon::lingomat
