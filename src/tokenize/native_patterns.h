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

// The matchers, one per fixed pattern; token_patterns.h binds each to its pattern text.
namespace native {
std::size_t shebang_line(const char* at, const char* end);
std::size_t line_comment(const char* at, const char* end);
const char* line_comment_fails_through(const char* at, const char* end);
std::size_t end_of_line(const char* at, const char* end);
std::size_t block_comment_start(const char* at, const char* end);
std::size_t number(const char* at, const char* end);
std::size_t tag(const char* at, const char* end);
std::size_t bracket(const char* at, const char* end);
std::size_t word(const char* at, const char* end);
std::size_t high_bytes(const char* at, const char* end);
std::size_t operator_token(const char* at, const char* end);
std::size_t shebang_mark(const char* at, const char* end);
std::size_t non_blank_run(const char* at, const char* end);
std::size_t blanks(const char* at, const char* end);
std::size_t env_assignments(const char* at, const char* end);
std::size_t tag_opener(const char* at, const char* end);
std::size_t attribute_with_value(const char* at, const char* end);
std::size_t bare_word(const char* at, const char* end);
std::size_t double_quoted_value_end(const char* at, const char* end);
std::size_t single_quoted_value_end(const char* at, const char* end);
std::size_t double_quote(const char* at, const char* end);
std::size_t single_quote(const char* at, const char* end);
std::size_t tag_end(const char* at, const char* end);
}  // namespace native

// The native matcher for this pattern text, or null when it must go to std::regex. Serves the
// scanner, which takes arbitrary pattern strings; the tokenizer calls its matchers directly.
const NativePattern* find_native_pattern(const std::string& pattern);

}  // namespace quillon::lingomat
