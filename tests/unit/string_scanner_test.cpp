#include "tokenize/string_scanner.h"

#include <gtest/gtest.h>

#include "tokenize/native_patterns.h"

namespace quillon::lingomat {
namespace {

TEST(StringScanner, ScanIsAnchoredAtTheCursor) {
  const std::string text = "abc";
  StringScanner scanner(text);
  EXPECT_EQ(scanner.scan("c"), "");
  EXPECT_EQ(scanner.pos(), 0u);
  EXPECT_EQ(scanner.scan("ab"), "ab");
  EXPECT_EQ(scanner.pos(), 2u);
  EXPECT_EQ(scanner.skip_until("c"), 1u);
  EXPECT_EQ(scanner.pos(), 3u);
  EXPECT_TRUE(scanner.eos());
  EXPECT_EQ(scanner.peek(1, 0), "");
  EXPECT_EQ(scanner.scan("x*"), "");
  EXPECT_EQ(scanner.pos(), 3u);
}

TEST(StringScanner, ZeroLengthMatchConsumesNothing) {
  const std::string text = "b";
  StringScanner scanner(text);
  EXPECT_EQ(scanner.scan("a*"), "");
  EXPECT_EQ(scanner.pos(), 0u);
  EXPECT_EQ(scanner.skip_until("a*"), 0u);
  EXPECT_EQ(scanner.pos(), 0u);
}

TEST(StringScanner, TextBeforeTheCursorIsInvisible) {
  const std::string text = "ax x";
  StringScanner scanner(text);
  scanner.set_pos(1);
  EXPECT_EQ(scanner.scan("^x"), "x");    // ^ matches at the cursor, mid-line
  EXPECT_EQ(scanner.scan("\\bx$"), "");  // the space is not x
  scanner.set_pos(3);
  EXPECT_EQ(scanner.scan("\\bx$"), "x");
  scanner.set_pos(1);
  EXPECT_EQ(scanner.scan("x$"), "");  // $ is only the end of the whole text
}

TEST(StringScanner, SkipUntilFindsTheFirstMatchOrStays) {
  const std::string text = "one two two";
  StringScanner scanner(text);
  EXPECT_EQ(scanner.skip_until("t\\w+"), 7u);
  EXPECT_EQ(scanner.pos(), 7u);
  EXPECT_EQ(scanner.skip_until("zzz"), 0u);
  EXPECT_EQ(scanner.pos(), 7u);
}

TEST(StringScanner, LineBeginNeedsALineFeed) {
  const std::string lf = "a\nb";
  StringScanner scanner(lf);
  EXPECT_TRUE(scanner.line_begin());
  scanner.advance();
  EXPECT_FALSE(scanner.line_begin());
  scanner.advance();
  EXPECT_TRUE(scanner.line_begin());

  const std::string cr = "a\rb";
  StringScanner cr_scanner(cr);
  cr_scanner.set_pos(2);
  EXPECT_FALSE(cr_scanner.line_begin());
}

TEST(StringScanner, PeekClipsAtTheEndAndRejectsPositionsPastIt) {
  const std::string text = "abcd";
  StringScanner scanner(text);
  scanner.set_pos(2);
  EXPECT_EQ(scanner.peek(5, 0), "cd");
  EXPECT_EQ(scanner.peek(1, -2), "a");
  EXPECT_EQ(scanner.peek(1, 2), "");
  EXPECT_THROW(scanner.peek(1, 3), std::out_of_range);
  scanner.set_pos(1);
  EXPECT_THROW(scanner.peek(1, -2), std::out_of_range);
}

TEST(StringScanner, CursorPastTheEndIsNotEos) {
  const std::string text = "ab";
  StringScanner scanner(text);
  scanner.set_pos(3);
  EXPECT_FALSE(scanner.eos());
  // Past the end nothing matches, rather than reading beyond the text.
  EXPECT_EQ(scanner.scan("\\S+"), "");
  EXPECT_EQ(scanner.skip_until("\n|$"), 0u);
  EXPECT_EQ(scanner.skip_until("a|b"), 0u);
  EXPECT_EQ(scanner.pos(), 3u);
}

TEST(StringScanner, MalformedPatternThrowsAndLeavesTheCursor) {
  const std::string text = "(a";
  StringScanner scanner(text);
  EXPECT_THROW(scanner.scan("("), std::regex_error);
  EXPECT_THROW(scanner.skip_until("("), std::regex_error);
  EXPECT_EQ(scanner.pos(), 0u);
  EXPECT_EQ(scanner.scan("\\("), "(");
}

TEST(StringScanner, CachesEachPatternOnce) {
  StringScanner::Detail detail;
  const std::regex& first = detail.get("a+");
  const std::regex& again = detail.get("a+");
  EXPECT_EQ(&first, &again);
  detail.get("b+");
  EXPECT_EQ(detail.patterns.size(), 2u);
  EXPECT_EQ(&detail.get("a+"), &first);
  EXPECT_THROW(detail.get("["), std::regex_error);
  EXPECT_EQ(detail.patterns.size(), 2u);
}

// Patterns without a built-in matcher are compiled and cached per scanner; switching back
// and forth between them must always use the pattern asked for, never a stale entry.
TEST(StringScanner, CompiledPatternsAreCachedPerPatternThroughScan) {
  const std::vector<std::string> patterns{"a+", "b+", "[ab]c", "(?:ab)+"};
  for (const std::string& pattern : patterns) ASSERT_EQ(find_native_pattern(pattern), nullptr);
  const std::string text = "aabbaabacababx";
  StringScanner scanner(text);
  EXPECT_EQ(scanner.scan("a+"), "aa");
  EXPECT_EQ(scanner.scan("a+"), "");
  EXPECT_EQ(scanner.scan("b+"), "bb");
  EXPECT_EQ(scanner.scan("a+"), "aa");
  EXPECT_EQ(scanner.scan("b+"), "b");
  EXPECT_EQ(scanner.scan("[ab]c"), "ac");
  EXPECT_EQ(scanner.scan("b+"), "");
  EXPECT_EQ(scanner.scan("(?:ab)+"), "abab");
  EXPECT_EQ(scanner.skip_until("b+"), 0u);
  EXPECT_EQ(scanner.skip_until("[ab]c"), 0u);
  EXPECT_EQ(scanner.pos(), 13u);
  EXPECT_EQ(scanner.scan("a+"), "");

  // A second scanner starts with its own cache and sees the same answers.
  StringScanner other(text);
  EXPECT_EQ(other.skip_until("[ab]c"), 9u);
  EXPECT_EQ(other.scan("(?:ab)+"), "abab");
}

// A pattern one character away from a built-in matcher takes the compiled path and keeps the
// regular-expression meaning of what it says.
TEST(StringScanner, NearMissesOfBuiltInPatternsUseTheirOwnMeaning) {
  ASSERT_NE(find_native_pattern("\\w+"), nullptr);
  ASSERT_EQ(find_native_pattern("\\w+?"), nullptr);
  ASSERT_EQ(find_native_pattern("\\w{2}"), nullptr);
  const std::string text = "word";
  StringScanner scanner(text);
  EXPECT_EQ(scanner.scan("\\w+?"), "w");
  EXPECT_EQ(scanner.scan("\\w{2}"), "or");
  EXPECT_EQ(scanner.scan("\\w+"), "d");
  EXPECT_TRUE(scanner.eos());
}

TEST(StringScanner, HighBytesAreOrdinaryBytes) {
  const std::string text = "caf\xC3\xA9x";
  StringScanner scanner(text);
  EXPECT_EQ(scanner.scan("\\w+"), "caf");
  EXPECT_EQ(scanner.scan("[\\x80-\\xFF]+"), "\xC3\xA9");
  EXPECT_EQ(scanner.scan("\\w+"), "x");
}

TEST(PatternEscape, EscapesExactlyTheSpecialCharacters) {
  EXPECT_EQ(StringScanner::pattern_escape("a.b(c)"), "a\\.b\\(c\\)");
  EXPECT_EQ(StringScanner::pattern_escape("x]-/"), "x]-/");
  EXPECT_EQ(StringScanner::pattern_escape("\\"), "\\\\");
  EXPECT_EQ(StringScanner::pattern_escape(""), "");
  EXPECT_EQ(StringScanner::pattern_escape("\\$.|?*+()[{}^"),
            "\\\\\\$\\.\\|\\?\\*\\+\\(\\)\\[\\{\\}\\^");
  EXPECT_EQ(StringScanner::pattern_escape("<!--\"'"), "<!--\"'");
}

TEST(PatternEscape, EscapedTextMatchesItselfLiterally) {
  const std::string literal = "(*a+b?)[x]{1}^$|.\\";
  const std::string text = "zz" + literal;
  StringScanner scanner(text);
  EXPECT_EQ(scanner.skip_until(StringScanner::pattern_escape(literal)), text.size());
}

}  // namespace
}  // namespace quillon::lingomat
