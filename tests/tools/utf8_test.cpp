#include "common/utf8.h"

#include <gtest/gtest.h>

namespace quillon::lingomat::tools {
namespace {

TEST(Utf8Test, AcceptsWellFormedText) {
  EXPECT_TRUE(is_valid_utf8(""));
  EXPECT_TRUE(is_valid_utf8("plain ascii"));
  EXPECT_TRUE(is_valid_utf8(std::string("nul\0inside", 10)));
  EXPECT_TRUE(is_valid_utf8("caf\xC3\xA9"));               // 2 bytes
  EXPECT_TRUE(is_valid_utf8("\xE2\x82\xAC"));              // 3 bytes
  EXPECT_TRUE(is_valid_utf8("\xF0\x9F\x98\x80"));          // 4 bytes
  EXPECT_TRUE(is_valid_utf8("\xED\x9F\xBF\xEE\x80\x80"));  // around the surrogates
  EXPECT_TRUE(is_valid_utf8("\xF4\x8F\xBF\xBF"));          // U+10FFFF
}

TEST(Utf8Test, RejectsIllFormedText) {
  EXPECT_FALSE(is_valid_utf8("caf\xE9"));           // Latin-1
  EXPECT_FALSE(is_valid_utf8("\x80"));              // lone continuation
  EXPECT_FALSE(is_valid_utf8("\xC3"));              // truncated
  EXPECT_FALSE(is_valid_utf8("\xE2\x82"));          // truncated
  EXPECT_FALSE(is_valid_utf8("\xC0\x80"));          // overlong NUL
  EXPECT_FALSE(is_valid_utf8("\xE0\x80\x80"));      // overlong
  EXPECT_FALSE(is_valid_utf8("\xF0\x80\x80\x80"));  // overlong
  EXPECT_FALSE(is_valid_utf8("\xED\xA0\x80"));      // surrogate
  EXPECT_FALSE(is_valid_utf8("\xF4\x90\x80\x80"));  // above U+10FFFF
  EXPECT_FALSE(is_valid_utf8("\xF5\x80\x80\x80"));
  EXPECT_FALSE(is_valid_utf8("\xFF"));
  EXPECT_FALSE(is_valid_utf8("\xC3\x28"));  // continuation missing
}

TEST(Utf8Test, SanitizeReplacesOnlyBadBytes) {
  EXPECT_EQ(sanitize_utf8("caf\xC3\xA9"), "caf\xC3\xA9");
  EXPECT_EQ(sanitize_utf8("caf\xE9!"), "caf\xEF\xBF\xBD!");
  EXPECT_EQ(sanitize_utf8("\xE2\x82"), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_TRUE(is_valid_utf8(sanitize_utf8("\xFF\xC0\x80\xED\xA0\x80x")));
}

}  // namespace
}  // namespace quillon::lingomat::tools
