#pragma once

#include <string>
#include <vector>

#include "engine/engine.h"

namespace quillon::lingomat::cli {

// One language the data file knows, by name or by content, and how it is recognised.
struct LanguageEntry {
  std::string name;  // as the data file spells it
  std::vector<std::string> extensions;
  std::vector<std::string> filenames;
  std::vector<std::string> interpreters;
  bool has_statistics = false;  // can be told from content alone
};

// Every language of the data file, sorted by name (byte order). Throws what the
// engine would for an unreadable or malformed file.
std::vector<LanguageEntry> read_language_catalog(const std::string& data_file);
// The same catalog from an engine's own lookups, with no second parse of the file.
std::vector<LanguageEntry> language_catalog(const Lingomat& engine);

// The catalog as a text table ("Name<TAB>.ext .ext" per line) or as JSON lines.
std::string catalog_text(const std::vector<LanguageEntry>& catalog);
std::string catalog_json_lines(const std::vector<LanguageEntry>& catalog);

// Up to three known names closest to `unknown`: same letters in another case first, then
// the smallest edit distances within a third of the name's length.
std::vector<std::string> closest_names(const std::string& unknown,
                                       const std::vector<LanguageEntry>& catalog);

// "; did you mean 'A' or 'B'?" with the closest names to `unknown`, or "" when none is close.
std::string did_you_mean(const std::string& unknown, const std::vector<LanguageEntry>& catalog);

// The first of `names` that the catalog does not know, or null when it knows them all.
const std::string* first_unknown_name(const std::vector<std::string>& names,
                                      const std::vector<LanguageEntry>& catalog);

}  // namespace quillon::lingomat::cli
