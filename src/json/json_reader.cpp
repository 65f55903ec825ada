#include "json/json_reader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include "base/data_file_keys.h"
#include "base/file_reading.h"
#include "json/data_file_sections.h"

namespace quillon::lingomat {
namespace {

// The ordinary parser recurses once per nesting level, so a hostile file of a million
// brackets would exhaust the stack, even a small host thread's at a few hundred. Real data
// files nest three levels; a file that nests deeper than this is parsed again by the
// iterative parser, which accepts and rejects the same documents.
constexpr std::size_t kRecursionSafeDepth = 32;
// Deeper documents are refused: each level costs the parser memory, so a file of nothing but
// '[' would otherwise take many times its size before failing. No data file nests anywhere
// near this deep.
constexpr std::size_t kMaxDepth = 1000;  // as the message says

// Hands every parse event on to the document, but stops the parse once arrays and objects
// nest deeper than the limit. Watching the parse costs nothing measurable; a scan of the
// text before it cost a sixth of loading.
class DepthLimit {
 public:
  DepthLimit(JsonDocument& document, std::size_t limit) : document_(document), limit_(limit) {}

  bool Null() { return document_.Null(); }
  bool Bool(bool value) { return document_.Bool(value); }
  bool Int(int value) { return document_.Int(value); }
  bool Uint(unsigned value) { return document_.Uint(value); }
  bool Int64(std::int64_t value) { return document_.Int64(value); }
  bool Uint64(std::uint64_t value) { return document_.Uint64(value); }
  bool Double(double value) { return document_.Double(value); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool copy) {
    return document_.RawNumber(text, length, copy);
  }
  bool String(const char* text, rapidjson::SizeType length, bool copy) {
    return document_.String(text, length, copy);
  }
  bool Key(const char* text, rapidjson::SizeType length, bool copy) {
    return document_.Key(text, length, copy);
  }
  bool StartObject() { return enter() && document_.StartObject(); }
  bool EndObject(rapidjson::SizeType members) {
    --depth_;
    return document_.EndObject(members);
  }
  bool StartArray() { return enter() && document_.StartArray(); }
  bool EndArray(rapidjson::SizeType elements) {
    --depth_;
    return document_.EndArray(elements);
  }

  bool too_deep() const { return depth_ > limit_; }

 private:
  bool enter() { return ++depth_ <= limit_; }

  JsonDocument& document_;
  std::size_t limit_;
  std::size_t depth_ = 0;
};

// Parses `text` into `document` with `kFlags`; false when it nests deeper than `limit`.
template <unsigned kFlags>
bool parse_within(const std::string& text, JsonDocument& document, std::size_t limit,
                  rapidjson::ParseResult& result) {
  bool too_deep = false;
  auto generate = [&](JsonDocument& handler) {
    DepthLimit limited(handler, limit);
    rapidjson::StringStream stream(text.c_str());
    rapidjson::Reader reader;
    result = reader.Parse<kFlags>(stream, limited);
    too_deep = limited.too_deep();
    return !result.IsError();
  };
  document.Populate(generate);
  return !too_deep;
}

// Counts are read as the document would type them: a number is a count when the parser's
// value for it says it fits a signed 32-bit integer.
template <typename Number>
DataFileCount count_of(Number number) {
  const JsonValue value(number);
  return value.IsInt() ? DataFileCount{value.GetInt(), true} : DataFileCount{};
}

// Gathers the sections of a data file from the parser's events, without building a document.
// Only the values the engine reads are kept; everything else is parsed and dropped.
class SectionGatherer {
 public:
  SectionGatherer(DataFileSections& sections, std::size_t depth_limit)
      : out_(sections), limit_(depth_limit) {}

  bool Null() { return scalar(DataFileCount{}); }
  bool Bool(bool) { return scalar(DataFileCount{}); }
  bool Int(int value) { return scalar(count_of(value)); }
  bool Uint(unsigned value) { return scalar(count_of(value)); }
  bool Int64(std::int64_t value) { return scalar(count_of(value)); }
  bool Uint64(std::uint64_t value) { return scalar(count_of(value)); }
  bool Double(double) { return scalar(DataFileCount{}); }
  bool RawNumber(const char*, rapidjson::SizeType, bool) { return scalar(DataFileCount{}); }
  bool String(const char* text, rapidjson::SizeType length, bool) {
    if (place_ == Place::kNames) {
      if (names_ != nullptr) names_->push_back(std::string(text, length));
      return true;
    }
    return scalar(DataFileCount{});
  }
  bool Key(const char* text, rapidjson::SizeType length, bool copy) {
    const std::string_view name(text, length);
    switch (place_) {
      case Place::kRoot:
        section_ = section_named(name);
        break;
      case Place::kSection:
        member_name_.assign(text, length);
        break;
      case Place::kTokenCounts:
        add_token_name(text, length, copy);
        break;
      default:
        break;
    }
    return true;
  }
  bool StartObject() { return enter(true); }
  bool StartArray() { return enter(false); }
  bool EndObject(rapidjson::SizeType) { return leave(); }
  bool EndArray(rapidjson::SizeType) { return leave(); }

  bool too_deep() const { return depth_ > limit_; }

  // Whether the members being read are token counts, which a scan may hand over through
  // token_count().
  bool in_token_counts() const { return place_ == Place::kTokenCounts; }
  // A token and its count, as Key() and then Int() with a count would hand them over.
  void token_count(const char* text, rapidjson::SizeType length, bool copy, int count) {
    add_token_name(text, length, copy);
    out_.token_counts_in_order.push_back(count);
  }

  // Reserves room for about `members` token counts and `distinct` different tokens.
  void reserve(std::size_t members, std::size_t distinct) {
    out_.token_ids.reserve(members);
    out_.token_counts_in_order.reserve(members);
    out_.vocabulary.reserve(distinct, distinct * 10);
    batch_.reserve(kBatch);
    batch_bytes_.reserve(kBatchBytes);
  }

  // Interns the token names waiting, in file order, and gives each its id. All are hashed
  // first, which leaves time to load their table slots; then what interning compares (the
  // entry a slot names, and its bytes) is loaded a few names ahead.
  void intern_batch() {
    Vocabulary& vocabulary = out_.vocabulary;
    const std::size_t count = batch_.size();
    auto hash_from = [&](std::size_t first) {
      for (std::size_t k = first; k < count; ++k) {
        batch_hashes_[k] = vocabulary.hash(batch_[k]);
        vocabulary.prefetch(batch_hashes_[k]);
      }
    };
    hash_from(0);
    constexpr std::size_t kEntryAhead = 8;
    constexpr std::size_t kBytesAhead = 4;
    for (std::size_t i = 0; i < count; ++i) {
      if (i + kEntryAhead < count) vocabulary.prefetch_entry(batch_hashes_[i + kEntryAhead]);
      if (i + kBytesAhead < count) vocabulary.prefetch_bytes(batch_hashes_[i + kBytesAhead]);
      const TokenHasher::Mode mode = vocabulary.hasher().mode();
      out_.token_ids.push_back(vocabulary.intern(batch_[i], batch_hashes_[i]));
      // A flood made the table change its hash: the hashes taken ahead are stale.
      if (vocabulary.hasher().mode() != mode) hash_from(i + 1);
    }
    batch_.clear();
    batch_bytes_.clear();
  }

 private:
  // Token names interned together, and room for their copies.
  static constexpr std::size_t kBatch = 256;
  static constexpr std::size_t kBatchBytes = 16 * 1024;

  // The container the next event belongs to.
  enum class Place : std::uint8_t { kTop, kRoot, kSection, kTokenCounts, kNames, kSkipped };
  enum class Section : std::uint8_t {
    kNone,
    kLanguages,
    kLanguageTokens,
    kTokens,
    kTokensTotal,
    kLanguagesTotal,
    kFilenames,
    kExtnames,
    kInterpreters,
  };

  // The section a root member names; kNone for other names and for any repeat, since only
  // the first member of a name is ever read.
  Section section_named(std::string_view name) {
    static constexpr std::pair<const char*, Section> kSections[] = {
        {data_keys::kLanguages, Section::kLanguages},
        {data_keys::kLanguageTokens, Section::kLanguageTokens},
        {data_keys::kTokens, Section::kTokens},
        {data_keys::kTokensTotal, Section::kTokensTotal},
        {data_keys::kLanguagesTotal, Section::kLanguagesTotal},
        {data_keys::kFilenames, Section::kFilenames},
        {data_keys::kExtnames, Section::kExtnames},
        {data_keys::kInterpreters, Section::kInterpreters},
    };
    for (const auto& [key, section] : kSections) {
      if (name != key) continue;
      DataFileMember& member = root_member(section);
      return member.shape == DataFileMember::Shape::kMissing ? section : Section::kNone;
    }
    return Section::kNone;
  }

  DataFileMember& root_member(Section section) {
    switch (section) {
      case Section::kLanguages:
        return out_.languages_member;
      case Section::kLanguageTokens:
        return out_.language_tokens_member;
      case Section::kTokens:
        return out_.tokens_member;
      case Section::kTokensTotal:
        return out_.tokens_total;
      case Section::kLanguagesTotal:
        return out_.languages_total;
      case Section::kFilenames:
      case Section::kExtnames:
      case Section::kInterpreters:
        return name_section(section).member;
      case Section::kNone:
        break;
    }
    return ignored_;
  }

  DataFileNameSection& name_section(Section section) {
    return section == Section::kFilenames  ? out_.filenames
           : section == Section::kExtnames ? out_.extnames
                                           : out_.interpreters;
  }

  static bool is_name_section(Section section) {
    return section == Section::kFilenames || section == Section::kExtnames ||
           section == Section::kInterpreters;
  }

  // Token names are interned a batch at a time, so that table slots can be loaded ahead. A
  // name that lies in the file's text is used where it lies; others are copied, into room
  // that never moves while the batch refers to it.
  void add_token_name(const char* text, rapidjson::SizeType length, bool copy) {
    if (copy) {
      if (batch_bytes_.capacity() - batch_bytes_.size() < length) {
        intern_batch();
        batch_bytes_.reserve(std::max<std::size_t>(length, kBatchBytes));
      }
      batch_bytes_.append(text, length);
      batch_.emplace_back(batch_bytes_.data() + batch_bytes_.size() - length, length);
    } else {
      batch_.emplace_back(text, length);
    }
    if (batch_.size() == kBatch) intern_batch();
    ++token_members_;
  }

  // A value that is neither an object nor an array, where `count` says what it counts.
  bool scalar(DataFileCount count) {
    switch (place_) {
      case Place::kRoot:
        if (section_ != Section::kNone) {
          DataFileMember& member = root_member(section_);
          member.shape = DataFileMember::Shape::kOther;
          member.count = count;
        }
        break;
      case Place::kSection:
        section_member(count, false);
        break;
      case Place::kTokenCounts:
        out_.token_counts_in_order.push_back(count.value);
        if (!count.is_int) counts_->all_counts_int = false;
        break;
      case Place::kNames:
        fault(data_keys::kNotAString);
        break;
      default:
        break;  // a root that is no object; or inside a skipped value
    }
    return true;
  }

  // A member of a section object whose value is `count` (or a container, when `is_object`
  // or not a count); returns whether its content is to be read.
  bool section_member(DataFileCount count, bool is_object) {
    switch (section_) {
      case Section::kLanguages:
        out_.languages.emplace_back(member_name_, count);
        return false;
      case Section::kLanguageTokens:
        out_.language_tokens.emplace(member_name_, count);
        return false;
      case Section::kTokens: {
        const auto [entry, added] = out_.token_counts.try_emplace(member_name_);
        if (!added) return false;
        entry->second.is_object = is_object;
        entry->second.first = entry->second.end = token_members_;
        counts_ = &entry->second;
        return is_object;
      }
      default:
        fault(data_keys::kUnexpectedType);  // a name section's member that is no array
        return false;
    }
  }

  void fault(const char* message) {
    DataFileNameSection& section = name_section(section_);
    if (section.fault == nullptr) section.fault = message;
    names_ = nullptr;  // refused whatever follows: the lists are no longer needed
  }

  bool enter(bool is_object) {
    if (++depth_ > limit_) return false;
    if (place_ == Place::kSkipped) {
      ++skipped_;
      return true;
    }
    Place next = Place::kSkipped;
    switch (place_) {
      case Place::kTop:
        out_.root_is_object = is_object;
        if (is_object) next = Place::kRoot;
        break;
      case Place::kRoot:
        if (section_ != Section::kNone) {
          root_member(section_).shape =
              is_object ? DataFileMember::Shape::kObject : DataFileMember::Shape::kOther;
          if (is_object) next = Place::kSection;
        }
        break;
      case Place::kSection:
        if (is_name_section(section_)) {
          if (is_object) {
            fault(data_keys::kUnexpectedType);
          } else {
            DataFileNameSection& section = name_section(section_);
            names_ =
                section.fault != nullptr
                    ? nullptr
                    : &section.lists.emplace_back(member_name_, std::vector<std::string>()).second;
            next = Place::kNames;
          }
        } else if (section_member(DataFileCount{}, is_object)) {
          next = Place::kTokenCounts;
        }
        break;
      case Place::kTokenCounts:
        out_.token_counts_in_order.push_back(0);
        counts_->all_counts_int = false;
        break;
      case Place::kNames:
        fault(data_keys::kNotAString);
        break;
      case Place::kSkipped:
        break;
    }
    if (next == Place::kSkipped) {
      resume_ = place_;
      skipped_ = 1;
    }
    place_ = next;
    return true;
  }

  bool leave() {
    --depth_;
    switch (place_) {
      case Place::kSkipped:
        if (--skipped_ == 0) place_ = resume_;
        break;
      case Place::kTokenCounts:
        counts_->end = token_members_;
        place_ = Place::kSection;
        break;
      case Place::kNames:
        place_ = Place::kSection;
        break;
      case Place::kSection:
        place_ = Place::kRoot;
        break;
      case Place::kRoot:
      case Place::kTop:
        place_ = Place::kTop;
        break;
    }
    return true;
  }

  DataFileSections& out_;
  std::size_t limit_;
  std::size_t depth_ = 0;
  Place place_ = Place::kTop;
  Place resume_ = Place::kTop;  // where a skipped value ends
  std::size_t skipped_ = 0;     // containers open inside the skipped value
  Section section_ = Section::kNone;
  std::string member_name_;
  DataFileTokenCounts* counts_ = nullptr;
  std::vector<std::string>* names_ = nullptr;
  DataFileMember ignored_;
  // The token names not yet interned, and the copies of those that needed one.
  std::vector<std::string_view> batch_;
  std::string batch_bytes_;
  std::uint64_t batch_hashes_[kBatch] = {};
  std::size_t token_members_ = 0;
};

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

// Room before anything grows for a token count per sixteen bytes of file, and for five
// eighths as many different tokens, a little more than trained data files hold; within a
// bound for the table, whose slots are touched at once, while a large file may hold few
// tokens.
void reserve_for(SectionGatherer& gatherer, const std::string& text) {
  const std::size_t members = text.size() / 16;
  gatherer.reserve(members, std::min<std::size_t>(members / 8 * 5, 1 << 20));
}

// Gathers `text` into `sections` by the plain scan; false when the parser must read it.
bool gather_plain(const std::string& text, DataFileSections& sections) {
  SectionGatherer gatherer(sections, kRecursionSafeDepth);
  reserve_for(gatherer, text);
  if (!PlainScanner(text).scan(gatherer)) return false;
  gatherer.intern_batch();
  return true;
}

// Parses `text` into `sections` with `kFlags`; false when it nests deeper than `limit`.
template <unsigned kFlags>
bool gather_within(const std::string& text, DataFileSections& sections, std::size_t limit,
                   rapidjson::ParseResult& result) {
  SectionGatherer gatherer(sections, limit);
  reserve_for(gatherer, text);
  rapidjson::StringStream stream(text.c_str());
  rapidjson::Reader reader;
  result = reader.Parse<kFlags>(stream, gatherer);
  if (gatherer.too_deep()) return false;
  if (!result.IsError()) gatherer.intern_batch();
  return true;
}

}  // namespace

DataFileSections read_data_file_sections(const std::string& path) {
  const std::string text = read_data_file(path);
  {
    DataFileSections plain;
    if (gather_plain(text, plain)) return plain;
  }
  DataFileSections sections;
  rapidjson::ParseResult result;
  if (!gather_within<rapidjson::kParseDefaultFlags>(text, sections, kRecursionSafeDepth, result)) {
    DataFileSections deep;
    if (!gather_within<rapidjson::kParseIterativeFlag>(text, deep, kMaxDepth, result)) {
      throw JsonException("nested deeper than 1000 levels");
    }
    if (result.IsError()) throw JsonException(rapidjson::GetParseError_En(result.Code()));
    return deep;
  }
  if (result.IsError()) throw JsonException(rapidjson::GetParseError_En(result.Code()));
  return sections;
}

JsonDocument parse_json_file(const std::string& path) {
  const std::string text = read_data_file(path);

  // The ordinary parser with its default flags, as Document::Parse would run it.
  JsonDocument document;
  rapidjson::ParseResult result;
  if (!parse_within<rapidjson::kParseDefaultFlags>(text, document, kRecursionSafeDepth, result)) {
    // The iterative parser needs no stack, but memory for every level: past the most any
    // data file needs, the file is refused where it gets that deep.
    JsonDocument deep;
    if (!parse_within<rapidjson::kParseIterativeFlag>(text, deep, kMaxDepth, result)) {
      throw JsonException("nested deeper than 1000 levels");
    }
    if (result.IsError()) throw JsonException(rapidjson::GetParseError_En(result.Code()));
    return deep;
  }
  if (result.IsError()) throw JsonException(rapidjson::GetParseError_En(result.Code()));
  return document;
}

std::string json_string(const JsonValue& value) {
  if (!value.IsString()) throw JsonException(kNotAString);
  return std::string(value.GetString(), value.GetStringLength());
}

}  // namespace quillon::lingomat
