#pragma once

#include <string>
#include <vector>

// The regular expressions the tokenizer hands to its scanner, in one place so that the
// scanner's built-in matchers can be checked against every one of them.
namespace quillon::lingomat::token_patterns {

struct CommentMarkers {
  const char* start;
  const char* end;
};

// Block comments. The order fixes the order of the alternatives in the start pattern.
inline constexpr CommentMarkers kBlockComments[] = {
    {"/*", "*/"}, {"<!--", "-->"}, {"{-", "-}"}, {"(*", "*)"}, {"\"\"\"", "\"\"\""}, {"'''", "'''"},
};

// Token extraction.
inline const std::string kShebangLine = "#![^\r\n]+";
inline const std::string kLineComment = "\\s*(?:#|//|--|%|\") ";
inline const std::string kEndOfLine = "\n|$";
inline const std::string kNumber =
    R"re((0x[0-9a-fA-F][0-9a-fA-F.]*|\d[0-9.]*)([uU][lL]{0,2}|([eE][-+]\d*)?[fFlL]*))re";
inline const std::string kTag = R"re(<[^\s<>][^<>]*>)re";
inline const std::string kBracket = R"re([;{}()[\]])re";
inline const std::string kWord = R"re([\w\.@#\/\*]+)re";
inline const std::string kHighBytes = R"re([\x80-\xFF]+)re";
inline const std::string kOperator = R"re([-+*/%]|<<?|&&?|\|\|?)re";

// Shebang lines.
inline const std::string kShebangMark = "#![ \t]*";
inline const std::string kNonBlankRun = "\\S+";
inline const std::string kBlanks = "[ \t]+";
inline const std::string kEnvAssignments = "[^\r\n]*=\\S+[ \t]+";

// SGML-like tags.
inline const std::string kTagOpener = R"re(<\/?[^\s>]+)re";
inline const std::string kAttributeWithValue = R"re(\w+=)re";
inline const std::string kBareWord = R"re(\w+)re";
inline const std::string kTagEnd = ">";
// One byte before the closing quote is required, so an empty quoted value is not closed by
// its own second quote.
inline const std::string kDoubleQuotedValueEnd = "[^\\\\]\"";
inline const std::string kSingleQuotedValueEnd = "[^\\\\]'";

// Every fixed pattern above; the block-comment patterns are built from the markers.
inline std::vector<std::string> fixed_patterns() {
  return {kShebangLine,
          kLineComment,
          kEndOfLine,
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
          kSingleQuotedValueEnd,
          "\"",
          "'"};
}

}  // namespace quillon::lingomat::token_patterns
