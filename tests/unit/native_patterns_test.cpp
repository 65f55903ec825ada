#include "tokenize/native_patterns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <regex>

#include "tokenize/string_scanner.h"
#include "tokenize/token_patterns.h"

namespace quillon::lingomat {
namespace {

using token_patterns::FixedPattern;

// Every pattern the tokenizer uses, block-comment ones included.
std::vector<std::string> tokenizer_patterns() {
  std::vector<std::string> patterns;
  for (const FixedPattern& pattern : token_patterns::fixed_patterns()) {
    patterns.push_back(pattern.text);
  }
  std::string starts;
  for (const auto& markers : token_patterns::kBlockComments) {
    starts += (starts.empty() ? "" : "|") + StringScanner::pattern_escape(markers.start);
    patterns.push_back(StringScanner::pattern_escape(markers.end));
  }
  EXPECT_NE(std::find(patterns.begin(), patterns.end(), starts), patterns.end())
      << "the block-comment start pattern is not the escaped markers joined";
  return patterns;
}

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
  const std::vector<std::string> patterns = tokenizer_patterns();
  EXPECT_EQ(patterns.size(), 28u);
  for (const std::string& pattern : patterns) {
    EXPECT_NE(find_native_pattern(pattern), nullptr) << pattern;
  }
  EXPECT_EQ(find_native_pattern("a|ab"), nullptr);
}

TEST(NativePatterns, AgreeWithTheRegularExpressionsOnRandomTexts) {
  std::mt19937 random(20261121);
  std::uniform_int_distribution<std::size_t> pick(0, kAlphabet.size() - 1);
  std::uniform_int_distribution<int> length(0, 14);
  for (const std::string& pattern : tokenizer_patterns()) {
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

// The tokenizer calls the matchers bound to the pattern objects: each must be the one the
// scanner finds for its text, so the random comparison above covers them.
TEST(NativePatterns, TypedPatternsAreBoundToTheirTextsMatchers) {
  for (const FixedPattern& pattern : token_patterns::fixed_patterns()) {
    const NativePattern* native = find_native_pattern(pattern.text);
    ASSERT_NE(native, nullptr) << pattern.text;
    EXPECT_EQ(native->match, pattern.match) << pattern.text;
    EXPECT_EQ(native->fails_through, pattern.fails_through) << pattern.text;
  }
}

TEST(NativePatterns, NumberSuffixesAndPrefixes) {
  const NativePattern* number = find_native_pattern(token_patterns::kNumber.text);
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
  const NativePattern* assignments = find_native_pattern(token_patterns::kEnvAssignments.text);
  ASSERT_NE(assignments, nullptr);
  const std::string text = "A=1 B=2 ruby x=y\nC=3 z";
  EXPECT_EQ(assignments->match(text.data(), text.data() + text.size()), 8u);
}

}  // namespace
}  // namespace quillon::lingomat
