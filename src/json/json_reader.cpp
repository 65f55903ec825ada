#include "json/json_reader.h"

#include <rapidjson/error/en.h>

#include "json/data_file_bytes.h"

namespace quillon::lingomat {
namespace {

// The ordinary parser recurses once per nesting level, so a hostile file of a million
// brackets would exhaust the stack, even a small host thread's at a few hundred. Real data
// files nest three levels; only deeper ones take the iterative parser, which accepts and
// rejects the same documents.
constexpr std::size_t kRecursionSafeDepth = 32;
// Deeper documents are refused before parsing: each level costs the parser memory, so a file
// of nothing but '[' would otherwise take many times its size before failing. No data file
// nests anywhere near this deep.
constexpr std::size_t kMaxDepth = 1000;  // as the message says

bool nests_deeper_than(const std::string& text, std::size_t limit) {
  std::size_t depth = 0;
  bool in_string = false;
  for (std::size_t i = 0; i < text.size() && text[i] != '\0'; ++i) {
    const char c = text[i];
    if (in_string) {
      if (c == '\\') {
        ++i;
      } else if (c == '"') {
        in_string = false;
      }
    } else if (c == '"') {
      in_string = true;
    } else if (c == '[' || c == '{') {
      if (++depth > limit) return true;
    } else if ((c == ']' || c == '}') && depth > 0) {
      --depth;
    }
  }
  return false;
}

// The iterative parser calls a document that opens with a stray ']', '}', ',' or ':' empty,
// where the default parser finds an invalid value. Such a document fails at its first byte,
// before any recursion, so the default parser can safely report it.
bool starts_with_stray_punctuation(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return false;
  const char c = text[first];
  return c == ']' || c == '}' || c == ',' || c == ':';
}

}  // namespace

JsonDocument parse_json_file(const std::string& path) {
  const std::string text = read_data_file(path);

  JsonDocument document;
  if (nests_deeper_than(text, kMaxDepth) && !starts_with_stray_punctuation(text)) {
    throw JsonException("nested deeper than 1000 levels");
  }
  if (nests_deeper_than(text, kRecursionSafeDepth) && !starts_with_stray_punctuation(text)) {
    document.Parse<rapidjson::kParseIterativeFlag>(text.c_str());
  } else {
    document.Parse(text.c_str());
  }
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
