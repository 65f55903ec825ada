#include "tokenize/native_patterns.h"

namespace quillon::lingomat {
namespace {

using native::kNoMatch;

// Character classes as the "C" locale defines them.
bool is_space(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_alpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool is_word(char c) { return is_alpha(c) || is_digit(c) || c == '_'; }
bool is_hex(char c) { return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
bool is_high(char c) { return static_cast<unsigned char>(c) >= 0x80; }
bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_line_break(char c) { return c == '\r' || c == '\n'; }

template <typename Predicate>
const char* skip_while(const char* p, const char* end, Predicate predicate) {
  while (p != end && predicate(*p)) ++p;
  return p;
}

template <typename Predicate>
std::size_t run_of(const char* at, const char* end, Predicate predicate) {
  const std::size_t length = static_cast<std::size_t>(skip_while(at, end, predicate) - at);
  return length == 0 ? kNoMatch : length;
}

std::size_t literal(const char* at, const char* end, const char* text, std::size_t length) {
  if (static_cast<std::size_t>(end - at) < length) return kNoMatch;
  for (std::size_t i = 0; i < length; ++i) {
    if (at[i] != text[i]) return kNoMatch;
  }
  return length;
}

template <std::size_t N>
std::size_t literal(const char* at, const char* end, const char (&text)[N]) {
  return literal(at, end, text, N - 1);
}

}  // namespace

namespace native {

// The bytes of the word rule, the commonest: one table lookup per byte.
const struct WordBytes {
  bool table[256] = {};
  WordBytes() {
    for (int c = 0; c < 256; ++c) {
      const char byte = static_cast<char>(c);
      table[c] =
          is_word(byte) || byte == '.' || byte == '@' || byte == '#' || byte == '/' || byte == '*';
    }
  }
} kWordBytes;

// "#![^\r\n]+"
std::size_t shebang_line(const char* at, const char* end) {
  if (literal(at, end, "#!") == kNoMatch) return kNoMatch;
  const std::size_t rest = run_of(at + 2, end, [](char c) { return !is_line_break(c); });
  return rest == kNoMatch ? kNoMatch : 2 + rest;
}

// "\s*(?:#|//|--|%|\") "
std::size_t line_comment(const char* at, const char* end) {
  const char* p = skip_while(at, end, is_space);
  if (p == end) return kNoMatch;
  std::size_t marker = 1;
  switch (*p) {
    case '#':
    case '%':
    case '"':
      break;
    case '/':
    case '-':
      if (end - p < 2 || p[1] != p[0]) return kNoMatch;
      marker = 2;
      break;
    default:
      return kNoMatch;
  }
  p += marker;
  if (p == end || *p != ' ') return kNoMatch;
  return static_cast<std::size_t>(p + 1 - at);
}

// Every start inside the leading white space reaches the same marker position, so a miss at
// one of them is a miss at all of them.
const char* line_comment_fails_through(const char* at, const char* end) {
  return skip_while(at, end, is_space);
}

// "/\*|<!--|\{-|\(\*|\"\"\"|'''"
std::size_t block_comment_start(const char* at, const char* end) {
  if (at == end) return kNoMatch;
  switch (*at) {  // the markers start with different bytes
    case '/':
      return literal(at, end, "/*");
    case '<':
      return literal(at, end, "<!--");
    case '{':
      return literal(at, end, "{-");
    case '(':
      return literal(at, end, "(*");
    case '"':
      return literal(at, end, "\"\"\"");
    case '\'':
      return literal(at, end, "\'\'\'");
    default:
      return kNoMatch;
  }
}

// "(0x[0-9a-fA-F][0-9a-fA-F.]*|\d[0-9.]*)([uU][lL]{0,2}|([eE][-+]\d*)?[fFlL]*)"
std::size_t number(const char* at, const char* end) {
  const char* p = at;
  if (end - p >= 3 && p[0] == '0' && p[1] == 'x' && is_hex(p[2])) {
    p = skip_while(p + 3, end, [](char c) { return is_hex(c) || c == '.'; });
  } else if (p != end && is_digit(*p)) {
    p = skip_while(p + 1, end, [](char c) { return is_digit(c) || c == '.'; });
  } else {
    return kNoMatch;
  }
  // The suffix always matches, possibly empty, so the prefix never has to give anything back.
  if (p != end && (*p == 'u' || *p == 'U')) {
    ++p;
    for (int i = 0; i < 2 && p != end && (*p == 'l' || *p == 'L'); ++i) ++p;
  } else {
    if (end - p >= 2 && (p[0] == 'e' || p[0] == 'E') && (p[1] == '-' || p[1] == '+')) {
      p = skip_while(p + 2, end, is_digit);
    }
    p = skip_while(p, end, [](char c) { return c == 'f' || c == 'F' || c == 'l' || c == 'L'; });
  }
  return static_cast<std::size_t>(p - at);
}

// "<[^\s<>][^<>]*>"
std::size_t tag(const char* at, const char* end) {
  if (end - at < 2 || at[0] != '<' || is_space(at[1]) || at[1] == '<' || at[1] == '>') {
    return kNoMatch;
  }
  const char* p = skip_while(at + 2, end, [](char c) { return c != '<' && c != '>'; });
  if (p == end || *p != '>') return kNoMatch;
  return static_cast<std::size_t>(p + 1 - at);
}

// "[;{}()[\]]"
std::size_t bracket(const char* at, const char* end) {
  if (at == end) return kNoMatch;
  switch (*at) {
    case ';':
    case '{':
    case '}':
    case '(':
    case ')':
    case '[':
    case ']':
      return 1;
    default:
      return kNoMatch;
  }
}

// "[\w\.@#\/\*]+"
std::size_t word(const char* at, const char* end) {
  return run_of(at, end, [](char c) { return kWordBytes.table[static_cast<unsigned char>(c)]; });
}

// "[\x80-\xFF]+"
std::size_t high_bytes(const char* at, const char* end) { return run_of(at, end, is_high); }

// "[-+*/%]|<<?|&&?|\|\|?"
std::size_t operator_token(const char* at, const char* end) {
  if (at == end) return kNoMatch;
  switch (*at) {
    case '-':
    case '+':
    case '*':
    case '/':
    case '%':
      return 1;
    case '<':
    case '&':
    case '|':
      return (end - at >= 2 && at[1] == at[0]) ? 2 : 1;
    default:
      return kNoMatch;
  }
}

// "#![ \t]*"
std::size_t shebang_mark(const char* at, const char* end) {
  if (literal(at, end, "#!") == kNoMatch) return kNoMatch;
  return static_cast<std::size_t>(skip_while(at + 2, end, is_blank) - at);
}

// "\S+"
std::size_t non_blank_run(const char* at, const char* end) {
  return run_of(at, end, [](char c) { return !is_space(c); });
}

// "[ \t]+"
std::size_t blanks(const char* at, const char* end) { return run_of(at, end, is_blank); }

// "[^\r\n]*=\S+[ \t]+": the greedy prefix settles on the last "=" of the line that is
// followed by a non-blank run and at least one blank.
std::size_t env_assignments(const char* at, const char* end) {
  const char* line_end = skip_while(at, end, [](char c) { return !is_line_break(c); });
  const char* run_end = line_end;  // end of the non-space run that starts after p
  for (const char* p = line_end; p != at;) {
    --p;
    if (p + 1 < line_end && is_space(p[1])) run_end = p + 1;
    if (*p != '=' || p + 1 == line_end || is_space(p[1])) continue;
    const char* blank_end = skip_while(run_end, end, is_blank);
    if (blank_end != run_end) return static_cast<std::size_t>(blank_end - at);
  }
  return kNoMatch;
}

// "<\/?[^\s>]+": an optional slash that the run could not follow is taken by the run itself.
std::size_t tag_opener(const char* at, const char* end) {
  if (at == end || *at != '<') return kNoMatch;
  const std::size_t rest = run_of(at + 1, end, [](char c) { return !is_space(c) && c != '>'; });
  return rest == kNoMatch ? kNoMatch : 1 + rest;
}

// "\w+="
std::size_t attribute_with_value(const char* at, const char* end) {
  const char* p = skip_while(at, end, is_word);
  if (p == at || p == end || *p != '=') return kNoMatch;
  return static_cast<std::size_t>(p + 1 - at);
}

// "\w+"
std::size_t bare_word(const char* at, const char* end) { return run_of(at, end, is_word); }

// "[^\\]\"" and "[^\\]'"
std::size_t double_quoted_value_end(const char* at, const char* end) {
  return (end - at >= 2 && at[0] != '\\' && at[1] == '"') ? 2 : kNoMatch;
}
std::size_t single_quoted_value_end(const char* at, const char* end) {
  return (end - at >= 2 && at[0] != '\\' && at[1] == '\'') ? 2 : kNoMatch;
}

std::size_t tag_end(const char* at, const char* end) { return literal(at, end, ">"); }

}  // namespace native
}  // namespace quillon::lingomat
