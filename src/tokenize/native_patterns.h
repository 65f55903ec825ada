#pragma once

#include <cstddef>
#include <string>

namespace quillon::lingomat {

// Hand-written matchers for the fixed patterns the tokenizer uses. They give the results
// of the ECMAScript expressions they stand for (with the "C" locale's character classes),
// but run in linear time without recursion, so a long line or a huge buffer cannot exhaust
// the stack.
struct NativePattern {
  static constexpr std::size_t kNoMatch = static_cast<std::size_t>(-1);
  // Length of the match that starts exactly at `at`, or kNoMatch.
  std::size_t (*match)(const char* at, const char* end);
  // After a failed match at `at`: the last position up to which every start fails too, or
  // null when nothing beyond `at` is known. Lets a caller that retries at each following
  // byte skip work it has already done.
  const char* (*fails_through)(const char* at, const char* end) = nullptr;
};

// The native matcher for this pattern text, or null when it must go to std::regex.
const NativePattern* find_native_pattern(const std::string& pattern);

}  // namespace quillon::lingomat
