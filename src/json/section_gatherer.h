#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <rapidjson/document.h>
#include <rapidjson/reader.h>

#include "base/data_file_keys.h"
#include "json/data_file_sections.h"

namespace quillon::lingomat {

// Counts are read as the document would type them: a number is a count when the parser's
// value for it says it fits a signed 32-bit integer.
template <typename Number>
DataFileCount count_of(Number number) {
  const rapidjson::Value value(number);
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

// Hands `out` the events of `text` if it is all the plain JSON data files are written in;
// false when it is not (the events handed over so far are then to be dropped).
bool scan_plain(std::string_view text, SectionGatherer& out);

}  // namespace quillon::lingomat
