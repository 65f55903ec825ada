#pragma once

#include <string_view>
#include <unordered_map>

#include "base/token_hash.h"
#include "json/json_reader.h"

namespace quillon::lingomat {

// Finds the members of one JSON object by name in constant expected time, for objects looked
// up once per language: a walk over the members per lookup makes loading quadratic in the
// number of languages. Answers exactly as a walk in document order would: when several
// members share a name, the first one wins. The object must outlive the index.
class JsonMemberIndex {
 public:
  explicit JsonMemberIndex(const JsonConstObject& object);

  // The value of the first member named `name` (compared byte for byte), or null.
  const JsonValue* find(std::string_view name) const;

  // As find(), but a missing member is a JsonException "JSON object missing expected key".
  const JsonValue& at(std::string_view name) const;

 private:
  // Keyed, so that names chosen to collide cannot make loading quadratic.
  std::unordered_map<std::string_view, const JsonValue*, KeyedStringHash> members_;
};

}  // namespace quillon::lingomat
