#include "prose_test.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string>

namespace quillon::lingomat::cli {

namespace {

// English function words, sorted for binary search. Frequent in any prose, rare in code
// outside its comments.
constexpr std::array<std::string_view, 40> kFunctionWords = {
    "all",  "an",  "and",   "any", "are",   "as",    "at",   "be",   "but", "by",
    "can",  "for", "from",  "has", "have",  "if",    "in",   "is",   "it",  "may",
    "not",  "of",  "on",    "or",  "other", "such",  "than", "that", "the", "these",
    "this", "to",  "under", "use", "was",   "which", "will", "with", "you", "your"};

// Words longer than the longest function word need no lookup.
constexpr std::size_t kLongestFunctionWord = 5;

bool is_letter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool is_function_word(std::string_view word) {
  if (word.size() > kLongestFunctionWord) return false;
  char lower[kLongestFunctionWord];
  for (std::size_t i = 0; i < word.size(); ++i) {
    lower[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(word[i])));
  }
  return std::binary_search(kFunctionWords.begin(), kFunctionWords.end(),
                            std::string_view(lower, word.size()));
}

}  // namespace

bool reads_as_prose(std::string_view text) {
  text = text.substr(0, kProseWindow);
  std::size_t words = 0;
  std::size_t function_words = 0;
  for (std::size_t i = 0; i < text.size();) {
    if (!is_letter(text[i])) {
      ++i;
      continue;
    }
    const std::size_t start = i;
    while (i < text.size() && is_letter(text[i])) ++i;
    ++words;
    if (is_function_word(text.substr(start, i - start))) ++function_words;
  }
  // Three in ten, in integers.
  return words != 0 && function_words * 10 >= words * 3;
}

}  // namespace quillon::lingomat::cli
