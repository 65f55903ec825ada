#include "engine/engine.h"

#include <algorithm>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "json/data_file_keys.h"
#include "json/json_reader.h"

namespace quillon::lingomat {
namespace {

// Keeps "language → names" from the data file as listed, and inverts it into
// "name → languages", keeping file order in both.
template <std::size_t N>
void build_lookup(LanguageLookup& lookup, LanguageNames& lists, const JsonValue& document,
                  const char (&key)[N]) {
  for (const auto& entry : json_get<JsonConstObject>(document, key)) {
    const std::string language = json_string(entry.name);
    if (!entry.value.IsArray()) throw JsonException(kUnexpectedType);
    std::vector<std::string>& names =
        lists.emplace_back(language, std::vector<std::string>()).second;
    names.reserve(entry.value.Size());
    for (const auto& name : entry.value.GetArray()) {
      names.push_back(json_string(name));
      lookup[names.back()].push_back(language);
    }
  }
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
Lingomat::Lingomat(const Opts& opts) : Lingomat(opts, parse_json_file(opts.classifier.data_file)) {
  return_freed_memory();  // the document is gone by now
}

Lingomat::Lingomat(const Opts& opts, const JsonValue& document)
    : opts_(opts), tokenizer_(opts_.tokenizer), classifier_(opts_.classifier, document) {
  build_lookup(filenames_, filename_lists_, document, data_keys::kFilenames);
  build_lookup(extnames_, extname_lists_, document, data_keys::kExtnames);
  build_lookup(interpreters_, interpreter_lists_, document, data_keys::kInterpreters);
  // Sorted once so that identification can test membership by binary search.
  std::sort(opts_.restrictions.begin(), opts_.restrictions.end());
}

}  // namespace quillon::lingomat
