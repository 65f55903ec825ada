#include "tokenize/tokenizer.h"

#include <algorithm>
#include <iterator>

#include "tokenize/token_patterns.h"

namespace quillon::lingomat {
namespace {

using namespace token_patterns;

using native::kNoMatch;
constexpr std::size_t kNever = SIZE_MAX;
// The line-comment pattern looks this far past its leading white space.
constexpr std::size_t kCommentMarkerBytes = 4;

// The cursor of one pass. A search that found nothing from some position finds nothing from
// any later one either, so callers keep where each search last failed: rules retried at every
// byte then stay linear instead of rescanning the rest of the text each time.
class Pass {
 public:
  explicit Pass(std::string_view text) : text_(text) {}

  std::size_t pos = 0;

  // One past the last byte any step has looked at; past the end once a step found the end.
  // Two texts that agree on the bytes before it tokenize alike.
  std::size_t reach = 0;
  void saw(std::size_t through) {
    if (through > reach) reach = through;
  }
  void saw_end() { saw(text_.size() + 1); }

  bool at_end() const { return pos == text_.size(); }
  bool line_begin() const { return pos == 0 || text_[pos - 1] == '\n'; }
  char next() const { return text_[pos]; }

  // Length of a non-empty match of `pattern` at the cursor, or 0; the cursor does not move.
  // Every pattern but the tag looks at most a few bytes past its match or its first byte.
  std::size_t match(const FixedPattern& pattern) {
    const std::size_t length = pattern.match(text_.data() + pos, text_.data() + text_.size());
    if (length == kNoMatch) {
      saw(&pattern == &kTag ? failed_tag_reach() : pos + kLookahead);
      return 0;
    }
    saw(pos + length + kLookahead);
    return length;
  }
  std::string_view take(std::size_t length) {
    const std::string_view taken = text_.substr(pos, length);
    pos += length;
    return taken;
  }

  // Moves just past the next occurrence of `literal`, or stays when there is none after a
  // position at or before which it already failed.
  bool skip_past(std::string_view literal, std::size_t& failed_from) {
    if (pos >= failed_from) return false;
    const std::size_t found = text_.find(literal, pos);
    if (found == std::string_view::npos) {
      failed_from = pos;
      saw_end();
      return false;
    }
    pos = found + literal.size();
    saw(pos);
    return true;
  }
  // Moves just past the next match of `pattern` that starts at or after the cursor.
  bool skip_past(const FixedPattern& pattern, std::size_t& failed_from) {
    if (pos >= failed_from) return false;
    const char* const end = text_.data() + text_.size();
    for (const char* at = text_.data() + pos; at != end; ++at) {
      const std::size_t length = pattern.match(at, end);
      if (length != kNoMatch) {
        pos = static_cast<std::size_t>(at - text_.data()) + length;
        saw(pos + kLookahead);
        return true;
      }
    }
    failed_from = pos;
    saw_end();
    return false;
  }

  std::string_view text() const { return text_; }

 private:
  // The fixed patterns other than the tag look this far beyond their match at most.
  static constexpr std::size_t kLookahead = 4;

  // A tag that failed to match at a '<' ran up to the next '<' or '>' looking for its end.
  std::size_t failed_tag_reach() const {
    if (pos == text_.size() || text_[pos] != '<') return pos + kLookahead;
    const std::size_t stop = text_.find_first_of("<>", pos + 1);
    return stop == std::string_view::npos ? text_.size() + 1 : stop + 1;
  }

  std::string_view text_;
};

// Bytes that can begin a match of some rule after the line-start ones: a block-comment
// marker, a quote, a number, a tag, a bracket, a word, a high byte or an operator. Any other
// byte away from a line start is stepped over without trying the rules.
struct RuleStarts {
  bool table[256] = {};
  RuleStarts() {
    for (int c = 0; c < 256; ++c) {
      const bool word =
          (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
      table[c] = word || c >= 0x80;
    }
    for (const unsigned char c : std::string_view("/<{(\"';})[].@#*-+%&|")) table[c] = true;
  }
  bool operator()(char c) const { return table[static_cast<unsigned char>(c)]; }
};
const RuleStarts starts_a_rule;

std::string_view after_last_slash(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

// The interpreter of a "#!" line, as a view into the line.
std::string_view shebang_interpreter(std::string_view text) {
  Pass pass(text);
  const std::size_t mark = pass.match(kShebangMark);
  if (mark == 0) return {};
  pass.pos += mark;
  std::string_view name = after_last_slash(pass.take(pass.match(kNonBlankRun)));
  if (name.empty()) return {};
  if (name == "env") {
    pass.pos += pass.match(kBlanks);
    pass.pos += pass.match(kEnvAssignments);  // NAME=value settings before the program
    name = after_last_slash(pass.take(pass.match(kNonBlankRun)));
  }
  // Version suffixes go: python3 and python2.7 are both python.
  return name.substr(0, name.find_first_of("0123456789"));
}

// A string literal whose opening quote is at the cursor. A quote preceded by a backslash
// counts as escaped (an escaped backslash before the quote is misread on purpose). Once a
// literal of this quote ran out, every quote after it is escaped, so any literal starting
// later runs out too, without walking them again.
void skip_string_literal(Pass& pass, char quote, std::size_t& unterminated_from) {
  pass.pos += 1;
  const std::size_t start = pass.pos;
  if (start >= unterminated_from) return;  // that earlier search already saw the end
  const std::string_view text = pass.text();
  for (;;) {
    const std::size_t found = text.find(quote, pass.pos);
    if (found == std::string_view::npos) {
      // Unterminated: only the opening quote is lost; the rest is tokenized as code.
      pass.pos = start;
      unterminated_from = start;
      pass.saw_end();
      return;
    }
    pass.pos = found + 1;
    pass.saw(pass.pos);
    if (text[found - 1] != '\\') return;
  }
}

}  // namespace

std::vector<std::string> Tokenizer::extract_tokens(std::string_view text) const {
  TokenList list;
  extract_tokens(text, list);
  return std::move(list.tokens);
}

void Tokenizer::extract_tokens(std::string_view text, TokenSink& sink) const {
  extract_tokens_and_reach(text, sink);
}

std::size_t Tokenizer::extract_tokens_and_reach(std::string_view text, TokenSink& sink) const {
  Pass pass(text);
  std::size_t line_comment_fails_from = 1, line_comment_fails_through = 0;  // empty range
  std::size_t comment_end_missing_from[std::size(kBlockComments)];
  std::fill(std::begin(comment_end_missing_from), std::end(comment_end_missing_from), kNever);
  std::size_t unterminated_double_quote = kNever;
  std::size_t unterminated_single_quote = kNever;

  // The limits are checked only between steps, so the last token may end past them.
  while (!pass.at_end() && !(opts_.max_bytes != 0 && pass.pos >= opts_.max_bytes) &&
         !(opts_.max_tokens != 0 && sink.count() >= opts_.max_tokens)) {
    pass.saw(pass.pos + 1);
    if (pass.line_begin()) {
      if (const std::size_t line = pass.match(kShebangLine)) {
        const std::string_view interpreter = shebang_interpreter(pass.take(line));
        if (!interpreter.empty()) sink.add_joined("SHEBANG#!", interpreter);
        continue;
      }
      if (pass.pos < line_comment_fails_from || pass.pos > line_comment_fails_through) {
        const char* const at = text.data() + pass.pos;
        const std::size_t comment = kLineComment.match(at, text.data() + text.size());
        if (comment != kNoMatch) {
          pass.pos += comment;
          const std::size_t line_feed = text.find('\n', pass.pos);
          pass.pos = line_feed == std::string_view::npos ? text.size() : line_feed + 1;
          pass.saw(line_feed == std::string_view::npos ? text.size() + 1 : pass.pos);
          continue;
        }
        // Every start inside the same leading white space fails alike.
        line_comment_fails_from = pass.pos;
        line_comment_fails_through = static_cast<std::size_t>(
            kLineComment.fails_through(at, text.data() + text.size()) - text.data());
        pass.saw(std::max(line_comment_fails_through, pass.pos) + kCommentMarkerBytes);
      }
    }

    if (!starts_a_rule(pass.next())) {
      pass.pos += 1;
      continue;
    }
    if (pass.match(kBlockCommentStart) != 0) {
      for (std::size_t i = 0; i < std::size(kBlockComments); ++i) {
        const std::string_view start = kBlockComments[i].start;
        if (text.substr(pass.pos, start.size()) != start) continue;
        pass.pos += start.size();
        pass.skip_past(kBlockComments[i].end, comment_end_missing_from[i]);
        break;
      }
      continue;
    }

    const char next = pass.next();
    if (next == '"' || next == '\'') {
      skip_string_literal(pass, next,
                          next == '"' ? unterminated_double_quote : unterminated_single_quote);
      continue;
    }

    if (const std::size_t number = pass.match(kNumber)) {
      pass.pos += number;
      continue;
    }
    if (const std::size_t tag = pass.match(kTag)) {
      extract_sgml_tokens(pass.take(tag), sink);
      continue;
    }
    std::size_t length = pass.match(kBracket);
    if (length == 0) length = pass.match(kWord);
    if (length == 0) length = pass.match(kHighBytes);
    if (length == 0) length = pass.match(kOperator);
    if (length == 0) {
      pass.pos += 1;
    } else {
      sink.add_view(pass.take(length));
    }
  }
  if (pass.at_end()) pass.saw_end();
  return pass.reach;
}

std::string Tokenizer::extract_shebang(std::string_view text) const {
  return std::string(shebang_interpreter(text));
}

std::string_view Tokenizer::shebang_view(std::string_view text) const {
  return shebang_interpreter(text);
}

std::vector<std::string> Tokenizer::extract_sgml_tokens(std::string_view text) const {
  TokenList list;
  extract_sgml_tokens(text, list);
  return std::move(list.tokens);
}

// Each token costs a few byte comparisons, so a tag of millions of attributes stays cheap.
void Tokenizer::extract_sgml_tokens(std::string_view text, TokenSink& sink) const {
  Pass pass(text);
  std::size_t double_quoted_end_missing_from = kNever;
  std::size_t single_quoted_end_missing_from = kNever;
  std::size_t word_missing_from = kNever;
  while (!pass.at_end()) {
    // Every rule below starts with "<", ">" or a word byte; anything else is stepped over.
    const char next = pass.next();
    if (next != '<' && next != '>' && pass.match(kBareWord) == 0) {
      pass.pos += 1;
      continue;
    }
    if (const std::size_t opener = pass.match(kTagOpener)) {
      sink.add_joined(pass.take(opener), ">");
      continue;
    }
    if (const std::size_t attribute = pass.match(kAttributeWithValue)) {
      sink.add_view(pass.take(attribute));
      // The value itself is never a token.
      const char quote = pass.at_end() ? '\0' : pass.next();
      if (quote == '"') {
        pass.pos += 1;
        pass.skip_past(kDoubleQuotedValueEnd, double_quoted_end_missing_from);
      } else if (quote == '\'') {
        pass.pos += 1;
        pass.skip_past(kSingleQuotedValueEnd, single_quoted_end_missing_from);
      } else {
        pass.skip_past(kBareWord, word_missing_from);
      }
      continue;
    }
    if (const std::size_t word = pass.match(kBareWord)) {
      sink.add_view(pass.take(word));
      continue;
    }
    if (pass.match(kTagEnd) != 0) break;
    pass.pos += 1;
  }
}

}  // namespace quillon::lingomat
