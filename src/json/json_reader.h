#pragma once

#include <cstring>
#include <string>

#include <rapidjson/document.h>

#include "base/data_file_keys.h"
#include "json/json_exception.h"

namespace quillon::lingomat {

using JsonDocument = rapidjson::Document;
using JsonValue = rapidjson::Value;
using JsonConstObject = JsonValue::ConstObject;

using data_keys::kMissingKey;
using data_keys::kNotAnObject;
using data_keys::kNotAString;
using data_keys::kUnexpectedType;

// Reads and parses a whole JSON file. A file that cannot be opened, or that read_data_file
// refuses, raises std::ios_base::failure; malformed JSON raises JsonException.
JsonDocument parse_json_file(const std::string& path);

// The bytes of a string value (embedded NULs kept); anything else is an error.
std::string json_string(const JsonValue& value);

namespace detail {
template <typename T>
struct JsonAs;

template <>
struct JsonAs<JsonConstObject> {
  static bool is(const JsonValue& v) { return v.IsObject(); }
  static JsonConstObject get(const JsonValue& v) { return v.GetObject(); }
};

template <>
struct JsonAs<int> {
  static bool is(const JsonValue& v) { return v.IsInt(); }
  static int get(const JsonValue& v) { return v.GetInt(); }
};
}  // namespace detail

// The member `key` of `value` as T. The first member of that name wins.
template <typename T, std::size_t N>
T json_get(const JsonValue& value, const char (&key)[N]) {
  if (!value.IsObject()) throw JsonException(kNotAnObject);
  const auto member = value.FindMember(rapidjson::StringRef(key, std::strlen(key)));
  if (member == value.MemberEnd()) throw JsonException(kMissingKey);
  if (!detail::JsonAs<T>::is(member->value)) throw JsonException(kUnexpectedType);
  return detail::JsonAs<T>::get(member->value);
}

}  // namespace quillon::lingomat
