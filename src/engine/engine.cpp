#include "engine/engine.h"

#include <algorithm>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "json/data_file_keys.h"
#include "json/json_reader.h"

namespace quillon::lingomat {
namespace {

// Inverts "language → names" from the data file into "name → languages", keeping file order.
template <std::size_t N>
void build_lookup(LanguageLookup& lookup, const JsonValue& document, const char (&key)[N]) {
  for (const auto& entry : json_get<JsonConstObject>(document, key)) {
    const std::string language = json_string(entry.name);
    if (!entry.value.IsArray()) throw JsonException(kUnexpectedType);
    for (const auto& name : entry.value.GetArray()) {
      lookup[json_string(name)].push_back(language);
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
  build_lookup(filenames_, document, data_keys::kFilenames);
  build_lookup(extnames_, document, data_keys::kExtnames);
  build_lookup(interpreters_, document, data_keys::kInterpreters);
  // Sorted once so that identification can test membership by binary search.
  std::sort(opts_.restrictions.begin(), opts_.restrictions.end());
}

}  // namespace quillon::lingomat
