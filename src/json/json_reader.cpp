#include "json/json_reader.h"

#include <algorithm>
#include <cstdint>
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
  bool Key(const char* text, rapidjson::SizeType length, bool) {
    const std::string_view name(text, length);
    switch (place_) {
      case Place::kRoot:
        section_ = section_named(name);
        break;
      case Place::kSection:
        member_name_.assign(text, length);
        break;
      case Place::kTokenCounts:
        // Interned a batch at a time, so that table slots can be loaded ahead.
        batch_bytes_.append(text, length);
        batch_ends_.push_back(batch_bytes_.size());
        if (batch_ends_.size() == kBatch) intern_batch();
        ++token_members_;
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

  // Reserves room for about `members` token counts and `distinct` different tokens.
  void reserve(std::size_t members, std::size_t distinct) {
    out_.token_ids.reserve(members);
    out_.token_counts_in_order.reserve(members);
    out_.vocabulary.reserve(distinct, distinct * 12);
    batch_ends_.reserve(kBatch);
  }

  // Interns the token names waiting, in file order, and gives each its id.
  void intern_batch() {
    Vocabulary& vocabulary = out_.vocabulary;
    const std::size_t count = batch_ends_.size();
    auto name = [&](std::size_t i) {
      const std::size_t begin = i == 0 ? 0 : batch_ends_[i - 1];
      return std::string_view(batch_bytes_).substr(begin, batch_ends_[i] - begin);
    };
    // Hashes run a few names ahead, so that their table slots are loaded in time.
    constexpr std::size_t kAhead = 8;
    std::uint64_t hashes[kAhead] = {};
    auto hash_ahead = [&](std::size_t k) {
      hashes[k % kAhead] = vocabulary.hash(name(k));
      vocabulary.prefetch(hashes[k % kAhead]);
    };
    for (std::size_t k = 0; k < std::min(kAhead, count); ++k) hash_ahead(k);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint64_t hash = hashes[i % kAhead];
      if (i + kAhead < count) hash_ahead(i + kAhead);  // takes the slot just read
      const TokenHasher::Mode mode = vocabulary.hasher().mode();
      out_.token_ids.push_back(vocabulary.intern(name(i), hash));
      if (vocabulary.hasher().mode() != mode) {
        // A flood made the table change its hash: the hashes read ahead are stale.
        for (std::size_t k = i + 1; k < std::min(i + 1 + kAhead, count); ++k) hash_ahead(k);
      }
    }
    batch_bytes_.clear();
    batch_ends_.clear();
  }

 private:
  // Token names interned together.
  static constexpr std::size_t kBatch = 256;

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
  // The token names not yet interned, end to end, and where each ends.
  std::string batch_bytes_;
  std::vector<std::size_t> batch_ends_;
  std::size_t token_members_ = 0;
};

// Parses `text` into `sections` with `kFlags`; false when it nests deeper than `limit`.
template <unsigned kFlags>
bool gather_within(const std::string& text, DataFileSections& sections, std::size_t limit,
                   rapidjson::ParseResult& result) {
  // Room before anything grows for a token count per sixteen bytes of file, and for half as
  // many different tokens, as in trained data files; within a bound for the table, whose
  // slots are touched at once, while a large file may hold few tokens.
  const std::size_t members = text.size() / 16;
  SectionGatherer gatherer(sections, limit);
  gatherer.reserve(members, std::min<std::size_t>(members / 2, 1 << 20));
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
