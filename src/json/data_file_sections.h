#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/token_hash.h"
#include "classify/vocabulary.h"

namespace quillon::lingomat {

// One name lookup as the data file lists it: each language with its names, both in file order.
using LanguageNames = std::vector<std::pair<std::string, std::vector<std::string>>>;

// A value of the data file where a count belongs: a 32-bit integer, or something else.
struct DataFileCount {
  int value = 0;
  bool is_int = false;
};

// What one member of the root held, for its first occurrence only (later ones are never read).
struct DataFileMember {
  enum class Shape : std::uint8_t { kMissing, kObject, kOther };
  Shape shape = Shape::kMissing;
  DataFileCount count;  // when it was a number
};

// The token counts of one language under "tokens" (its first occurrence there).
struct DataFileTokenCounts {
  bool is_object = false;
  bool all_counts_int = true;
  // Its members, in file order, in DataFileSections::token_ids and token_counts.
  std::size_t first = 0;
  std::size_t end = 0;
};

// A name lookup section: the lists read, and the first fault met in it, if any.
struct DataFileNameSection {
  DataFileMember member;
  LanguageNames lists;
  const char* fault = nullptr;  // the message it would be refused with
};

// Everything the engine reads from a data file, gathered in one pass over the text while it
// is parsed, with the faults met on the way kept in place rather than raised: whether one
// matters depends on the rest of the file, so the classifier and the engine judge them in
// the order they always have, once the whole file is known to be valid JSON.
struct DataFileSections {
  bool root_is_object = false;
  DataFileMember languages_member;
  DataFileMember language_tokens_member;
  DataFileMember tokens_member;
  DataFileMember tokens_total;
  DataFileMember languages_total;

  std::vector<std::pair<std::string, DataFileCount>> languages;  // in file order, repeats kept
  // The first member of each name; later ones are never read.
  std::unordered_map<std::string, DataFileCount, KeyedStringHash> language_tokens;
  std::unordered_map<std::string, DataFileTokenCounts, KeyedStringHash> token_counts;

  // Every token named under "tokens", interned once; and each member's token id and count.
  Vocabulary vocabulary;
  std::vector<std::uint32_t> token_ids;
  std::vector<int> token_counts_in_order;

  DataFileNameSection filenames;
  DataFileNameSection extnames;
  DataFileNameSection interpreters;
};

// Reads and parses the data file at `path` into its sections. Fails as parse_json_file does:
// std::ios_base::failure (a DataFileError) for a file that cannot be read, JsonException
// with the parser's text for malformed JSON or one nested too deep.
DataFileSections read_data_file_sections(const std::string& path);

}  // namespace quillon::lingomat
