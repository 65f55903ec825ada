#include "engine/engine.h"

#include <algorithm>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "base/data_file_keys.h"
#include "base/file_reading.h"
#include "engine/status.h"
#include "json/json_reader.h"

namespace quillon::lingomat {
namespace {

// Inverts "language → names" from the data file into "name → languages", keeping file order
// in both, and keeps the lists as they were read. Refuses the section as a walk over it would:
// the first fault met, in file order.
void build_lookup(LanguageLookup& lookup, LanguageNames& lists, DataFileNameSection& section) {
  if (section.member.shape == DataFileMember::Shape::kMissing) throw JsonException(kMissingKey);
  if (section.member.shape != DataFileMember::Shape::kObject) {
    throw JsonException(kUnexpectedType);
  }
  if (section.fault != nullptr) throw JsonException(section.fault);
  lists = std::move(section.lists);
  for (const auto& [language, names] : lists) {
    for (const std::string& name : names) lookup[name].push_back(language);
  }
}

// The lookup `key` as listed, for describing languages: unlike build_lookup, a section that
// is not an object is kNotAnObject, as the tools have always reported it.
LanguageNames listed_names(const JsonValue& document, const char* key) {
  const auto member = document.FindMember(key);
  if (member == document.MemberEnd()) throw JsonException(kMissingKey);
  if (!member->value.IsObject()) throw JsonException(kNotAnObject);
  LanguageNames lists;
  for (const auto& language : member->value.GetObject()) {
    if (!language.value.IsArray()) throw JsonException(kUnexpectedType);
    std::vector<std::string>& names =
        lists.emplace_back(json_string(language.name), std::vector<std::string>()).second;
    for (const auto& name : language.value.GetArray()) names.push_back(json_string(name));
  }
  return lists;
}

}  // namespace

// The allocator would keep freed pages for good: the parsed document (about twice the data
// file) after creation, the whole engine after destruction.
void return_freed_memory() {
#if defined(__GLIBC__)
  malloc_trim(0);
#endif
}

// The file is read and parsed once: the statistics are checked first, then the lookups, so
// errors come in the order they always did.
Lingomat::Lingomat(const Opts& opts)
    : Lingomat(opts, read_data_file_sections(opts.classifier.data_file)) {
  return_freed_memory();  // the file's text and the gathered sections are gone by now
}

Lingomat::Lingomat(const Opts& opts, DataFileSections&& sections)
    : opts_(opts), tokenizer_(opts_.tokenizer), classifier_(opts_.classifier, sections) {
  build_lookup(filenames_, filename_lists_, sections.filenames);
  build_lookup(extnames_, extname_lists_, sections.extnames);
  build_lookup(interpreters_, interpreter_lists_, sections.interpreters);
  // Sorted once so that identification can test membership by binary search.
  std::sort(opts_.restrictions.begin(), opts_.restrictions.end());
}

EngineCreation create_engine(const Lingomat::Opts& opts) noexcept {
  EngineCreation created;
  try {
    created.engine = std::make_unique<Lingomat>(opts);
  } catch (...) {
    created.status = status_of_current_exception();
    try {
      try {
        throw;
      } catch (const DataFileError& error) {
        created.reason = error.reason();
      } catch (...) {
        created.reason = message_of_current_exception();
      }
    } catch (...) {
      // No memory left even for the reason: the status says enough.
    }
  }
  return created;
}

// In the order the tools have always checked them: lookups first, then the statistics.
DataFileNames read_data_file_names(const std::string& data_file) {
  const JsonDocument document = parse_json_file(data_file);
  if (!document.IsObject()) throw JsonException(kNotAnObject);
  DataFileNames names;
  names.extnames = listed_names(document, data_keys::kExtnames);
  names.filenames = listed_names(document, data_keys::kFilenames);
  names.interpreters = listed_names(document, data_keys::kInterpreters);
  for (const auto& language : json_get<JsonConstObject>(document, data_keys::kLanguages)) {
    names.languages.push_back(json_string(language.name));
  }
  return names;
}

}  // namespace quillon::lingomat
