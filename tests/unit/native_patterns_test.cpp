#include "tokenize/native_patterns.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>

namespace quillon::lingomat {
namespace {

// Every pattern the tokenizer passes to the scanner.
const char* const kTokenizerPatterns[] = {
    "#![^\r\n]+",
    "\\s*(?:#|//|--|%|\") ",
    "\n|$",
    "/\\*|<!--|\\{-|\\(\\*|\"\"\"|'''",
    "\\*/",
    "-->",
    "-\\}",
    "\\*\\)",
    "\"\"\"",
    "'''",
    "\"",
    "'",
    ">",
    "(0x[0-9a-fA-F][0-9a-fA-F.]*|\\d[0-9.]*)([uU][lL]{0,2}|([eE][-+]\\d*)?[fFlL]*)",
    "<[^\\s<>][^<>]*>",
    "[;{}()[\\]]",
    "[\\w\\.@#\\/\\*]+",
    "[\\x80-\\xFF]+",
    "[-+*/%]|<<?|&&?|\\|\\|?",
    "#![ \t]*",
    "\\S+",
    "[ \t]+",
    "[^\r\n]*=\\S+[ \t]+",
    "<\\/?[^\\s>]+",
    "\\w+=",
    "\\w+",
    "[^\\\\]\"",
    "[^\\\\]'",
};

// Bytes that matter to at least one pattern, plus a few that matter to none.
const std::string kAlphabet = std::string("#!/\\\"'<>=-+*%&|.@_;{}()[]0x1e9aFuUlLE \t\r\n\v\f") +
                              "\x80\xC3\xFF" + std::string(1, '\0') + "zZ,";

std::size_t regex_match_length(const std::regex& re, const std::string& text, std::size_t at) {
  std::smatch m;
  if (!std::regex_search(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), m, re,
                         std::regex_constants::match_continuous)) {
    return NativePattern::kNoMatch;
  }
  return static_cast<std::size_t>(m.length(0));
}

TEST(NativePatterns, CoverEveryTokenizerPattern) {
  for (const char* pattern : kTokenizerPatterns) {
    EXPECT_NE(find_native_pattern(pattern), nullptr) << pattern;
  }
  EXPECT_EQ(find_native_pattern("a|ab"), nullptr);
}

TEST(NativePatterns, AgreeWithTheRegularExpressionsOnRandomTexts) {
  std::mt19937 random(20261121);
  std::uniform_int_distribution<std::size_t> pick(0, kAlphabet.size() - 1);
  std::uniform_int_distribution<int> length(0, 14);
  for (const char* pattern : kTokenizerPatterns) {
    const std::regex re(pattern, std::regex_constants::optimize);
    const NativePattern* native = find_native_pattern(pattern);
    ASSERT_NE(native, nullptr);
    for (int round = 0; round < 4000; ++round) {
      std::string text;
      for (int i = length(random); i > 0; --i) text += kAlphabet[pick(random)];
      for (std::size_t at = 0; at <= text.size(); ++at) {
        const std::size_t expected = regex_match_length(re, text, at);
        const std::size_t actual = native->match(text.data() + at, text.data() + text.size());
        ASSERT_EQ(actual, expected) << "pattern " << pattern << " text [" << text << "] at " << at;
      }
    }
  }
}

TEST(NativePatterns, NumberSuffixesAndPrefixes) {
  const NativePattern* number = find_native_pattern(kTokenizerPatterns[13]);
  ASSERT_NE(number, nullptr);
  auto length = [&](const std::string& text) {
    return number->match(text.data(), text.data() + text.size());
  };
  EXPECT_EQ(length("0x1Fe-5"), 5u);
  EXPECT_EQ(length("0X1F"), 1u);
  EXPECT_EQ(length("10ULL"), 5u);
  EXPECT_EQ(length("1.5e-3f"), 7u);
  EXPECT_EQ(length("1e5"), 1u);
  EXPECT_EQ(length("x1"), NativePattern::kNoMatch);
}

TEST(NativePatterns, EnvAssignmentsTakeTheLastSettingOnTheLine) {
  const NativePattern* assignments = find_native_pattern("[^\r\n]*=\\S+[ \t]+");
  ASSERT_NE(assignments, nullptr);
  const std::string text = "A=1 B=2 ruby x=y\nC=3 z";
  EXPECT_EQ(assignments->match(text.data(), text.data() + text.size()), 8u);
}

}  // namespace
}  // namespace quillon::lingomat
