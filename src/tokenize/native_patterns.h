#pragma once

#include <cstddef>

namespace quillon::lingomat {

// Hand-written matchers for the fixed patterns the tokenizer uses. They give the results
// of the ECMAScript expressions they stand for (with the "C" locale's character classes),
// but run in linear time without recursion, so a long line or a huge buffer cannot exhaust
// the stack. Each returns the length of the match that starts exactly at `at`, or kNoMatch.
// token_patterns.h binds each to its pattern text.
namespace native {
inline constexpr std::size_t kNoMatch = static_cast<std::size_t>(-1);

std::size_t shebang_line(const char* at, const char* end);
std::size_t line_comment(const char* at, const char* end);
// After a failed line_comment match at `at`: the last position up to which every start fails
// too, so a caller that retries at each following byte can skip work it has already done.
const char* line_comment_fails_through(const char* at, const char* end);
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
std::size_t tag_end(const char* at, const char* end);
}  // namespace native

}  // namespace quillon::lingomat
