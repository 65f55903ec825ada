// The engine against the reference on the shipped data file: real sources, random texts and
// hostile shapes, under the default limits and with every limit off.
#include "differential.h"
#include "sample_texts.h"

namespace quillon::lingomat {
namespace {

const EnginePair& shipped(bool unlimited) {
  static const EnginePair defaults = make_pair(LINGOMAT_TEST_DATA, defaults::kMaxBytes,
                                               defaults::kMaxTokens, defaults::kMinTokens, -8.0);
  static const EnginePair relaxed = make_pair(LINGOMAT_TEST_DATA, 0, 0, 0, 0.0);
  return unlimited ? relaxed : defaults;
}

TEST(ShippedDataFile, RepositorySourcesAndRandomTexts) {
  const auto files = test_support::repository_files(LINGOMAT_TEST_SOURCE_DIR, 120);
  ASSERT_GT(files.size(), 50u);
  for (const auto& [name, text] : files) {
    expect_same(shipped(false), name, text);
    expect_same(shipped(true), name, text.substr(0, 6000));  // unlimited: keep the regexes shallow
  }
  for (const std::string& text : test_support::random_texts(100, 1500, 20261122)) {
    expect_same(shipped(false), "x.c", text);
    expect_same(shipped(true), "x.h", text);
  }
}

// Hostile shapes; at a quarter megabyte, too much for the reference, the streamed scoring must
// rank as the classifier ranks the plain token list.
TEST(ShippedDataFile, HostileTexts) {
  const auto small = test_support::hostile_texts(3000);
  const auto large = test_support::hostile_texts(256 * 1024);
  const Lingomat& engine = *shipped(true).engine;
  for (std::size_t i = 0; i < small.size(); ++i) {
    SCOPED_TRACE(small[i].name);
    expect_same(shipped(false), "x.html", small[i].text);
    expect_same(shipped(true), "", small[i].text);
    const std::vector<std::string> tokens = engine.tokenizer().extract_tokens(large[i].text);
    EXPECT_EQ(exactly(engine.identify_by_classifier(large[i].text, {})),
              exactly(engine.classifier().classify(tokens, engine.classifier().languages())));
  }
}

}  // namespace
}  // namespace quillon::lingomat
