#include "json/json_reader.h"

#include <fstream>
#include <iterator>

#include <rapidjson/error/en.h>

namespace quillon::lingomat {
namespace {

// The ordinary parser recurses once per nesting level, so a hostile file of a million
// brackets would exhaust the stack, even a small host thread's at a few hundred. Real data
// files nest three levels; only deeper ones take the iterative parser, which accepts and
// rejects the same documents.
constexpr std::size_t kRecursionSafeDepth = 32;

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

}  // namespace

JsonDocument parse_json_file(const std::string& path) {
  std::ifstream stream(path, std::ios::in);
  // Enabling exceptions on a stream whose open failed throws at once, so an
  // unreadable file surfaces as a stream failure and never as a JSON error.
  stream.exceptions(std::ios::failbit | std::ios::badbit);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};

  JsonDocument document;
  if (nests_deeper_than(text, kRecursionSafeDepth)) {
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
