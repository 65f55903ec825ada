#include "json/json_reader.h"

#include <fstream>
#include <iterator>

#include <rapidjson/error/en.h>

namespace quillon::lingomat {

JsonDocument parse_json_file(const std::string& path) {
  std::ifstream stream(path, std::ios::in);
  // Enabling exceptions on a stream whose open failed throws at once, so an
  // unreadable file surfaces as a stream failure and never as a JSON error.
  stream.exceptions(std::ios::failbit | std::ios::badbit);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};

  JsonDocument document;
  document.Parse(text.c_str());
  if (document.HasParseError()) {
    throw JsonException(rapidjson::GetParseError_En(document.GetParseError()));
  }
  return document;
}

std::string json_string(const JsonValue& value) {
  if (!value.IsString()) throw JsonException(kNotAString);
  return std::string(value.GetString(), value.GetStringLength());
}

}  // namespace quillon::lingomat
