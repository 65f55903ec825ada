// The flood defence: tokens made to share one fast hash whatever its seed, and the keyed hash
// the vocabulary switches to when they arrive.
#include "base/token_hash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "classify/vocabulary.h"
#include "sample_texts.h"

namespace quillon::lingomat {
namespace {

TEST(TokenHash, TheKeyedHashIsSipHash) {
  // The published vector: key bytes 0..15, message bytes 0..14; 1-3 shares its code.
  const std::uint64_t key[2] = {0x0706050403020100ull, 0x0F0E0D0C0B0A0908ull};
  std::string message;
  for (char byte = 0; byte < 15; ++byte) message.push_back(byte);
  EXPECT_EQ(siphash24(message, key), 0xA129CA6149BE45E5ull);
  EXPECT_NE(siphash13(message, key), siphash24(message, key));
}

// The tokens of the colliding benchmark input, one per "#!/usr/bin/NAME" line.
std::vector<std::string> shebang_tokens(bool colliding) {
  std::vector<std::string> tokens;
  const std::string text = test_support::shebang_lines(200 * 1024, colliding);
  for (std::size_t at = 0, end; at < text.size(); at = end + 1) {
    end = text.find('\n', at);
    tokens.push_back("SHEBANG#!" + text.substr(at + 11, end - at - 11));
  }
  return tokens;
}

TEST(TokenHash, AFloodedVocabularySwitchesToTheKeyedHashAndFindsEveryToken) {
  const std::vector<std::string> tokens = shebang_tokens(true);
  ASSERT_GT(std::set<std::string>(tokens.begin(), tokens.end()).size(), 1000u);
  TokenHasher fresh;  // a seed of its own: the tokens collide whatever it is
  std::set<std::uint64_t> hashes;
  for (const std::string& token : tokens) hashes.insert(fresh(token));
  EXPECT_EQ(hashes.size(), 1u);

  Vocabulary flooded;
  std::vector<std::uint32_t> ids;
  for (const std::string& token : tokens) ids.push_back(flooded.intern(token));
  flooded.shrink_to_fit();
  EXPECT_EQ(flooded.hasher().mode(), TokenHasher::Mode::kKeyed);
  for (std::size_t i = 0; i < tokens.size(); ++i) EXPECT_EQ(flooded.find(tokens[i]), ids[i]);
  EXPECT_EQ(flooded.find("absent"), Vocabulary::kAbsent);

  Vocabulary ordinary;
  for (const std::string& token : shebang_tokens(false)) ordinary.intern(token);
  EXPECT_EQ(ordinary.hasher().mode(), TokenHasher::Mode::kFast);
}

}  // namespace
}  // namespace quillon::lingomat
