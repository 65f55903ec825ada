#include "tokenize/tokenizer.h"

#include "tokenize/string_scanner.h"
#include "tokenize/token_patterns.h"

namespace quillon::lingomat {
namespace {

using namespace token_patterns;

// Skips a string literal whose opening quote is at the cursor. A quote preceded by a
// backslash counts as escaped (an escaped backslash before the quote is misread on purpose).
// `unterminated_from` remembers where a literal of this quote ran out: every quote after it
// is escaped, so any literal starting later runs out too, without walking them again.
void skip_string_literal(StringScanner& scanner, char quote, std::uint64_t& unterminated_from) {
  scanner.advance();
  const std::uint64_t start = scanner.pos();
  if (start >= unterminated_from) return;
  const std::string quote_pattern(1, quote);
  for (;;) {
    if (scanner.skip_until(quote_pattern) == 0) {
      // Unterminated: only the opening quote is lost; the rest is tokenized as code.
      scanner.set_pos(start);
      unterminated_from = start;
      return;
    }
    if (scanner.peek(1, -2) != "\\") return;
  }
}

}  // namespace

Tokenizer::Tokenizer(const Opts& opts) : opts_(opts) {
  std::string alternation;
  for (const CommentMarkers& markers : kBlockComments) {
    const std::string start = StringScanner::pattern_escape(markers.start);
    const std::string end = StringScanner::pattern_escape(markers.end);
    if (!multiline_comments_.empty()) alternation += "|";
    alternation += start;
    multiline_comments_[markers.start] = end;
  }
  multiline_comment_pattern_ = alternation;
}

std::vector<std::string> Tokenizer::extract_tokens(const std::string& text) const {
  std::vector<std::string> tokens;
  StringScanner scanner(text);
  std::uint64_t unterminated_double_quote = UINT64_MAX;
  std::uint64_t unterminated_single_quote = UINT64_MAX;
  // The limits are checked only between steps, so the last token may end past them.
  while (!scanner.eos() && !(opts_.max_bytes != 0 && scanner.pos() >= opts_.max_bytes) &&
         !(opts_.max_tokens != 0 && tokens.size() >= opts_.max_tokens)) {
    if (scanner.line_begin()) {
      const std::string shebang_line = scanner.scan(kShebangLine);
      if (!shebang_line.empty()) {
        const std::string interpreter = extract_shebang(shebang_line);
        if (!interpreter.empty()) tokens.push_back("SHEBANG#!" + interpreter);
        continue;
      }
      if (!scanner.scan(kLineComment).empty()) {
        scanner.skip_until(kEndOfLine);
        continue;
      }
    }

    const std::string comment_start = scanner.scan(multiline_comment_pattern_);
    if (!comment_start.empty()) {
      scanner.skip_until(multiline_comments_.at(comment_start));
      continue;
    }

    const std::string next = scanner.peek(1, 0);
    if (next == "\"" || next == "'") {
      skip_string_literal(scanner, next[0],
                          next[0] == '"' ? unterminated_double_quote : unterminated_single_quote);
      continue;
    }

    if (!scanner.scan(kNumber).empty()) continue;

    const std::string tag = scanner.scan(kTag);
    if (!tag.empty()) {
      for (std::string& token : extract_sgml_tokens(tag)) tokens.push_back(std::move(token));
      continue;
    }

    std::string token = scanner.scan(kBracket);
    if (token.empty()) token = scanner.scan(kWord);
    if (token.empty()) token = scanner.scan(kHighBytes);
    if (token.empty()) token = scanner.scan(kOperator);
    if (token.empty()) {
      scanner.advance();
    } else {
      tokens.push_back(std::move(token));
    }
  }
  return tokens;
}

}  // namespace quillon::lingomat
