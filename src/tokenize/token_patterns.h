#pragma once

#include <cstddef>
#include <vector>

#include "tokenize/native_patterns.h"

// The regular expressions of the tokenizer, each bound to the matcher that stands for it. The
// tokenizer calls the matchers; the pattern texts say what they match, and the tests check
// every matcher against std::regex on its text.
namespace quillon::lingomat::token_patterns {

struct CommentMarkers {
  const char* start;
  const char* end;
};

// Block comments. The order fixes the order of the alternatives in the start pattern.
inline constexpr CommentMarkers kBlockComments[] = {
    {"/*", "*/"}, {"<!--", "-->"}, {"{-", "-}"}, {"(*", "*)"}, {"\"\"\"", "\"\"\""}, {"'''", "'''"},
};

struct FixedPattern {
  const char* text;  // the ECMAScript form
  std::size_t (*match)(const char* at, const char* end);
  const char* (*fails_through)(const char* at, const char* end) = nullptr;
};

// Token extraction.
inline constexpr FixedPattern kShebangLine{"#![^\r\n]+", native::shebang_line};
inline constexpr FixedPattern kLineComment{"\\s*(?:#|//|--|%|\") ", native::line_comment,
                                           native::line_comment_fails_through};
inline constexpr FixedPattern kBlockCommentStart{"/\\*|<!--|\\{-|\\(\\*|\"\"\"|'''",
                                                 native::block_comment_start};
inline constexpr FixedPattern kNumber{
    R"re((0x[0-9a-fA-F][0-9a-fA-F.]*|\d[0-9.]*)([uU][lL]{0,2}|([eE][-+]\d*)?[fFlL]*))re",
    native::number};
inline constexpr FixedPattern kTag{R"re(<[^\s<>][^<>]*>)re", native::tag};
inline constexpr FixedPattern kBracket{R"re([;{}()[\]])re", native::bracket};
inline constexpr FixedPattern kWord{R"re([\w\.@#\/\*]+)re", native::word};
inline constexpr FixedPattern kHighBytes{R"re([\x80-\xFF]+)re", native::high_bytes};
inline constexpr FixedPattern kOperator{R"re([-+*/%]|<<?|&&?|\|\|?)re", native::operator_token};

// Shebang lines.
inline constexpr FixedPattern kShebangMark{"#![ \t]*", native::shebang_mark};
inline constexpr FixedPattern kNonBlankRun{"\\S+", native::non_blank_run};
inline constexpr FixedPattern kBlanks{"[ \t]+", native::blanks};
inline constexpr FixedPattern kEnvAssignments{"[^\r\n]*=\\S+[ \t]+", native::env_assignments};

// SGML-like tags.
inline constexpr FixedPattern kTagOpener{R"re(<\/?[^\s>]+)re", native::tag_opener};
inline constexpr FixedPattern kAttributeWithValue{R"re(\w+=)re", native::attribute_with_value};
inline constexpr FixedPattern kBareWord{R"re(\w+)re", native::bare_word};
inline constexpr FixedPattern kTagEnd{">", native::tag_end};
// One byte before the closing quote is required, so an empty quoted value is not closed by
// its own second quote.
inline constexpr FixedPattern kDoubleQuotedValueEnd{"[^\\\\]\"", native::double_quoted_value_end};
inline constexpr FixedPattern kSingleQuotedValueEnd{"[^\\\\]'", native::single_quoted_value_end};

// Every fixed pattern above, so that each matcher can be checked against its text.
inline std::vector<FixedPattern> fixed_patterns() {
  return {kShebangLine,
          kLineComment,
          kBlockCommentStart,
          kNumber,
          kTag,
          kBracket,
          kWord,
          kHighBytes,
          kOperator,
          kShebangMark,
          kNonBlankRun,
          kBlanks,
          kEnvAssignments,
          kTagOpener,
          kAttributeWithValue,
          kBareWord,
          kTagEnd,
          kDoubleQuotedValueEnd,
          kSingleQuotedValueEnd};
}

}  // namespace quillon::lingomat::token_patterns
