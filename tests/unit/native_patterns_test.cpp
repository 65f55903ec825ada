#include "tokenize/native_patterns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <regex>
#include <string>

#include "tokenize/token_patterns.h"

namespace quillon::lingomat {
namespace {

using native::kNoMatch;
using token_patterns::FixedPattern;

// The ECMAScript form of a literal marker.
std::string escaped(const std::string& text) {
  std::string pattern;
  for (const char c : text) {
    if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) pattern += '\\';
    pattern += c;
  }
  return pattern;
}

// Bytes that matter to at least one pattern, plus a few that matter to none.
const std::string kAlphabet = std::string("#!/\\\"'<>=-+*%&|.@_;{}()[]0x1e9aFuUlLE \t\r\n\v\f") +
                              "\x80\xC3\xFF" + std::string(1, '\0') + "zZ,";

std::size_t regex_match_length(const std::regex& re, const std::string& text, std::size_t at) {
  std::smatch m;
  if (!std::regex_search(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), m, re,
                         std::regex_constants::match_continuous)) {
    return kNoMatch;
  }
  return static_cast<std::size_t>(m.length(0));
}

// The start pattern is the markers' alternation, in order; the end markers are searched for
// as plain text.
TEST(NativePatterns, BlockCommentStartIsTheMarkersJoined) {
  std::string starts;
  for (const auto& markers : token_patterns::kBlockComments) {
    starts += (starts.empty() ? "" : "|") + escaped(markers.start);
  }
  EXPECT_EQ(starts, token_patterns::kBlockCommentStart.text);
  EXPECT_EQ(token_patterns::fixed_patterns().size(), 19u);
}

TEST(NativePatterns, AgreeWithTheRegularExpressionsOnRandomTexts) {
  std::mt19937 random(20261121);
  std::uniform_int_distribution<std::size_t> pick(0, kAlphabet.size() - 1);
  std::uniform_int_distribution<int> length(0, 14);
  for (const FixedPattern& pattern : token_patterns::fixed_patterns()) {
    const std::regex re(pattern.text, std::regex_constants::optimize);
    for (int round = 0; round < 4000; ++round) {
      std::string text;
      for (int i = length(random); i > 0; --i) text += kAlphabet[pick(random)];
      for (std::size_t at = 0; at <= text.size(); ++at) {
        const std::size_t expected = regex_match_length(re, text, at);
        const char* end = text.data() + text.size();
        const std::size_t actual = pattern.match(text.data() + at, end);
        ASSERT_EQ(actual, expected)
            << "pattern " << pattern.text << " text [" << text << "] at " << at;
        // Every start up to where a miss says starts fail must miss too.
        if (actual != kNoMatch || pattern.fails_through == nullptr) continue;
        const char* through = pattern.fails_through(text.data() + at, end);
        for (const char* p = text.data() + at; p < through; ++p) {
          ASSERT_EQ(regex_match_length(re, text, static_cast<std::size_t>(p - text.data())),
                    kNoMatch)
              << "pattern " << pattern.text << " text [" << text << "] at " << at;
        }
      }
    }
  }
}

TEST(NativePatterns, NumberSuffixesAndPrefixes) {
  auto length = [&](const std::string& text) {
    return token_patterns::kNumber.match(text.data(), text.data() + text.size());
  };
  EXPECT_EQ(length("0x1Fe-5"), 5u);
  EXPECT_EQ(length("0X1F"), 1u);
  EXPECT_EQ(length("10ULL"), 5u);
  EXPECT_EQ(length("1.5e-3f"), 7u);
  EXPECT_EQ(length("1e5"), 1u);
  EXPECT_EQ(length("x1"), kNoMatch);
}

TEST(NativePatterns, EnvAssignmentsTakeTheLastSettingOnTheLine) {
  const std::string text = "A=1 B=2 ruby x=y\nC=3 z";
  EXPECT_EQ(token_patterns::kEnvAssignments.match(text.data(), text.data() + text.size()), 8u);
}

}  // namespace
}  // namespace quillon::lingomat
