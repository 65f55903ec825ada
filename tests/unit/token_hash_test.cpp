#include "base/token_hash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "classify/vocabulary.h"
#include "sample_texts.h"

namespace quillon::lingomat {
namespace {

TEST(TokenHash, SipHashGivesThePublishedTestVector) {
  // The reference vector: key bytes 0..15, message bytes 0..14.
  const std::uint64_t key[2] = {0x0706050403020100ull, 0x0F0E0D0C0B0A0908ull};
  std::string message;
  for (char byte = 0; byte < 15; ++byte) message.push_back(byte);
  EXPECT_EQ(siphash24(message, key), 0xA129CA6149BE45E5ull);
  // One round fewer per word is another function of the same key.
  EXPECT_NE(siphash13(message, key), siphash24(message, key));
}

// The tokens of the colliding benchmark input (one per "#!" line).
std::vector<std::string> colliding_tokens(bool colliding) {
  std::vector<std::string> tokens;
  const std::string text = test_support::shebang_lines(200 * 1024, colliding);
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    tokens.push_back("SHEBANG#!" + text.substr(at + 11, end - at - 11));  // after "#!/usr/bin/"
    at = end + 1;
  }
  return tokens;
}

TEST(TokenHash, TheFastHashCanBeFloodedWhateverItsSeedTheKeyedOneCannot) {
  const std::vector<std::string> tokens = colliding_tokens(true);
  ASSERT_GT(std::set<std::string>(tokens.begin(), tokens.end()).size(), 1000u);
  for (int seed = 0; seed < 3; ++seed) {
    TokenHasher hasher;  // a new random seed and key each time
    std::set<std::uint64_t> fast;
    for (const std::string& token : tokens) fast.insert(hasher(token));
    EXPECT_EQ(fast.size(), 1u);
    hasher.use_keyed();
    std::set<std::uint64_t> keyed;
    for (const std::string& token : tokens) keyed.insert(hasher(token));
    EXPECT_EQ(keyed.size(), std::set<std::string>(tokens.begin(), tokens.end()).size());
  }
}

TEST(TokenHash, AFloodedVocabularySwitchesToTheKeyedHashAndFindsEveryToken) {
  Vocabulary flooded;
  const std::vector<std::string> tokens = colliding_tokens(true);
  std::vector<std::uint32_t> ids;
  for (const std::string& token : tokens) ids.push_back(flooded.intern(token));
  flooded.shrink_to_fit();
  EXPECT_EQ(flooded.hasher().mode(), TokenHasher::Mode::kKeyed);
  for (std::size_t i = 0; i < tokens.size(); ++i) EXPECT_EQ(flooded.find(tokens[i]), ids[i]);
  EXPECT_EQ(flooded.find("absent"), Vocabulary::kAbsent);

  // Ordinary tokens keep the fast hash.
  Vocabulary ordinary;
  for (const std::string& token : colliding_tokens(false)) ordinary.intern(token);
  EXPECT_EQ(ordinary.hasher().mode(), TokenHasher::Mode::kFast);
}

}  // namespace
}  // namespace quillon::lingomat
