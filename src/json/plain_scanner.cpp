#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "json/nesting_limits.h"
#include "json/section_gatherer.h"

namespace quillon::lingomat {
namespace {

// Scans the plain JSON that data files are written in (no surrogate escapes, integers of at
// most nine digits, fractions without exponents, nesting within the recursion-safe depth)
// and hands the gatherer the very events the parser would. At anything else, valid or not,
// it gives up, and the parser reads the whole file again from the start; so the scan never
// decides anything the parser could decide differently. It is about twice as fast.
class PlainScanner {
  // The bytes a string holds as they are: all but the quote, the backslash and control
  // characters (the NUL that ends the text among them).
  static constexpr std::array<bool, 256> kPlainByte = [] {
    std::array<bool, 256> plain{};
    for (int c = 0x20; c < 256; ++c) plain[static_cast<std::size_t>(c)] = c != '"' && c != '\\';
    return plain;
  }();

 public:
  // `text` ends with a NUL, as a std::string's contents do.
  explicit PlainScanner(std::string_view text) : p_(text.data()), end_(text.data() + text.size()) {}

  // False when the text is not all plain JSON (or the gatherer stopped); the events handed
  // over so far are then to be dropped.
  bool scan(SectionGatherer& out) {
    skip_space();
    if (!value(out)) return false;
    skip_space();
    return *p_ == '\0';  // the parser, too, stops at the first NUL
  }

 private:
  static bool is_digit(char c) { return c >= '0' && c <= '9'; }

  void skip_space() {
    const char* end = p_;
    while (*end == ' ' || *end == '\n' || *end == '\r' || *end == '\t') ++end;
    p_ = end;
  }

  bool value(SectionGatherer& out) {
    switch (*p_) {
      case '{':
        return object(out);
      case '[':
        return array(out);
      case '"': {
        const char* begin = nullptr;
        rapidjson::SizeType length = 0;
        return string(begin, length) && out.String(begin, length, begin == scratch_.data());
      }
      case 't':
        return word("true") && out.Bool(true);
      case 'f':
        return word("false") && out.Bool(false);
      case 'n':
        return word("null") && out.Null();
      default:
        return number(out);
    }
  }

  bool word(const char* expected) {
    for (; *expected != '\0'; ++expected, ++p_) {
      if (*p_ != *expected) return false;
    }
    return true;
  }

  // Where among the 8 bytes of `word` (in memory order) the first quote, backslash or control
  // character is, or 8. Each test may also flag bytes after a true match, never before one,
  // so the lowest flag of all three is the first such byte.
  static unsigned first_special(std::uint64_t word) {
    constexpr std::uint64_t kOnes = 0x0101010101010101ull;
    constexpr std::uint64_t kHighs = 0x8080808080808080ull;
    const auto zero_byte = [](std::uint64_t x) { return (x - kOnes) & ~x & kHighs; };
    const std::uint64_t found = zero_byte(word ^ (kOnes * '"')) | zero_byte(word ^ (kOnes * '\\')) |
                                ((word - kOnes * 0x20) & ~word & kHighs);
    return found == 0 ? 8 : static_cast<unsigned>(__builtin_ctzll(found)) / 8;
  }

  // From the opening quote: the characters up to the closing one, which is passed. Escapes
  // are decoded into a scratch copy, as the parser decodes them.
  bool string(const char*& begin, rapidjson::SizeType& length) {
    begin = ++p_;
    const char* end = begin;  // a local cursor stays in a register
    // Eight bytes at a time while eight remain in the text, then byte by byte. The word's
    // first byte in memory is its lowest only on little-endian machines.
    constexpr bool kWordsInMemoryOrder = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    for (; kWordsInMemoryOrder && end_ - end >= 8; end += 8) {
      std::uint64_t word;
      std::memcpy(&word, end, sizeof word);
      const unsigned at = first_special(word);
      if (at < 8) {
        end += at;
        break;
      }
    }
    while (kPlainByte[static_cast<unsigned char>(*end)]) ++end;
    p_ = end;
    if (*end == '\\') return escaped_string(begin, length);
    if (*end != '"') return false;  // control characters, the end
    length = static_cast<rapidjson::SizeType>(end - begin);
    ++p_;
    return true;
  }

  bool escaped_string(const char*& begin, rapidjson::SizeType& length) {
    scratch_.assign(begin, p_);
    for (;;) {
      const auto c = static_cast<unsigned char>(*p_);
      if (c == '"') break;
      if (c < 0x20) return false;
      ++p_;
      if (c != '\\') {
        scratch_.push_back(static_cast<char>(c));
        continue;
      }
      const char escape = *p_++;
      switch (escape) {
        case '"':
        case '\\':
        case '/':
          scratch_.push_back(escape);
          break;
        case 'b':
          scratch_.push_back('\b');
          break;
        case 'f':
          scratch_.push_back('\f');
          break;
        case 'n':
          scratch_.push_back('\n');
          break;
        case 'r':
          scratch_.push_back('\r');
          break;
        case 't':
          scratch_.push_back('\t');
          break;
        case 'u':
          if (!code_point()) return false;
          break;
        default:
          return false;
      }
    }
    ++p_;
    begin = scratch_.data();
    length = static_cast<rapidjson::SizeType>(scratch_.size());
    return true;
  }

  // Four hex digits of a code point outside the surrogates, appended in UTF-8; surrogates
  // (pairs or not) are left to the parser.
  bool code_point() {
    unsigned code = 0;
    for (int i = 0; i < 4; ++i, ++p_) {
      const char c = *p_;
      const int digit = is_digit(c)            ? c - '0'
                        : c >= 'a' && c <= 'f' ? c - 'a' + 10
                        : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                               : -1;
      if (digit < 0) return false;
      code = code * 16 + static_cast<unsigned>(digit);
    }
    if (code >= 0xD800 && code <= 0xDFFF) return false;
    if (code < 0x80) {
      scratch_.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
      scratch_.push_back(static_cast<char>(0xC0 | (code >> 6)));
      scratch_.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
      scratch_.push_back(static_cast<char>(0xE0 | (code >> 12)));
      scratch_.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
      scratch_.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
    return true;
  }

  // Integers as the parser hands them on (Uint when not negative, else Int); fractions only
  // as not being integers, which is all that is read of them.
  bool number(SectionGatherer& out) {
    const bool minus = *p_ == '-';
    if (minus) ++p_;
    const char* digits = p_;
    unsigned value = 0;
    if (*p_ == '0') {
      ++p_;
    } else {
      while (is_digit(*p_)) value = value * 10 + static_cast<unsigned>(*p_++ - '0');
    }
    const auto count = p_ - digits;
    if (count == 0 || count > 9 || *p_ == 'e' || *p_ == 'E') return false;
    if (*p_ == '.') {
      const char* fraction = ++p_;
      while (is_digit(*p_)) ++p_;
      if (p_ == fraction || p_ - fraction > 15 || *p_ == 'e' || *p_ == 'E') return false;
      return out.Double(0.0);
    }
    return minus ? out.Int(-static_cast<int>(value)) : out.Uint(value);
  }

  bool object(SectionGatherer& out) {
    if (++depth_ > kRecursionSafeDepth || !out.StartObject()) return false;
    ++p_;
    if (out.in_token_counts()) return token_counts(out);
    skip_space();
    if (*p_ == '}') return close(out.EndObject(0));
    for (;;) {
      const char* begin = nullptr;
      rapidjson::SizeType length = 0;
      if (*p_ != '"' || !string(begin, length) ||
          !out.Key(begin, length, begin == scratch_.data())) {
        return false;
      }
      skip_space();
      if (*p_ != ':') return false;
      ++p_;
      skip_space();
      if (!value(out)) return false;
      skip_space();
      if (*p_ == '}') return close(out.EndObject(0));
      if (*p_ != ',') return false;
      ++p_;
      skip_space();
    }
  }

  // The members of a token-count object, nearly all of them plain counts: read in one loop
  // and handed over without the dispatch every other value goes through.
  bool token_counts(SectionGatherer& out) {
    skip_space();
    if (*p_ == '}') return close(out.EndObject(0));
    for (;;) {
      const char* begin = nullptr;
      rapidjson::SizeType length = 0;
      if (*p_ != '"' || !string(begin, length)) return false;
      const bool copy = begin == scratch_.data();
      skip_space();
      if (*p_ != ':') return false;
      ++p_;
      skip_space();
      int count = 0;
      if (plain_count(count)) {
        out.token_count(begin, length, copy, count);
      } else if (!out.Key(begin, length, copy) || !value(out)) {
        return false;
      }
      skip_space();
      if (*p_ == '}') return close(out.EndObject(0));
      if (*p_ != ',') return false;
      ++p_;
      skip_space();
    }
  }

  // A count without sign, fraction or exponent, of at most nine digits, which is passed;
  // false for anything else, which is left where it is.
  bool plain_count(int& count) {
    const char* end = p_;
    unsigned value = 0;
    if (*end == '0') {
      ++end;
    } else {
      while (is_digit(*end)) value = value * 10 + static_cast<unsigned>(*end++ - '0');
    }
    const auto digits = end - p_;
    if (digits == 0 || digits > 9 || is_digit(*end) || *end == '.' || *end == 'e' || *end == 'E') {
      return false;
    }
    p_ = end;
    count = static_cast<int>(value);
    return true;
  }

  bool array(SectionGatherer& out) {
    if (++depth_ > kRecursionSafeDepth || !out.StartArray()) return false;
    ++p_;
    skip_space();
    if (*p_ == ']') return close(out.EndArray(0));
    for (;;) {
      if (!value(out)) return false;
      skip_space();
      if (*p_ == ']') return close(out.EndArray(0));
      if (*p_ != ',') return false;
      ++p_;
      skip_space();
    }
  }

  bool close(bool handled) {
    ++p_;
    --depth_;
    return handled;
  }

  const char* p_;
  const char* const end_;  // the NUL after the text
  std::size_t depth_ = 0;
  std::string scratch_;  // a string with escapes, decoded
};

}  // namespace

bool scan_plain(std::string_view text, SectionGatherer& out) {
  return PlainScanner(text).scan(out);
}

}  // namespace quillon::lingomat
