#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "check/check_report.h"

namespace quillon::lingomat::tools {

// A JSON value with the byte offset where it starts, kept only to the depth a data
// file uses; deeper containers are recorded by kind alone.
struct JsonNode {
  enum class Kind { kNull, kBool, kNumber, kString, kArray, kObject };
  struct Member;

  Kind kind = Kind::kNull;
  std::size_t offset = 0;
  bool is_int = false;  // a number the engine reads as a signed 32-bit integer
  std::int64_t int_value = 0;
  std::string text;                // a string's bytes
  std::vector<Member> members;     // an object's members, in file order
  std::vector<JsonNode> elements;  // an array's elements

  // The first member named `name`, as the engine finds it, or null.
  const Member* find(const std::string& name) const;
};

struct JsonNode::Member {
  std::string name;
  std::size_t name_offset = 0;
  JsonNode value;
};

// How deep values are kept: the root, the sections, the languages and their entries.
inline constexpr std::size_t kOutlineDepth = 4;

// Parses `text` as the engine does (up to the first NUL byte) with an iterative
// parser, so no nesting depth can exhaust the stack. Reports into `report` a parse
// error and every duplicate member name at any depth. Returns false when the text is
// not JSON.
bool read_outline(const std::string& text, JsonNode& root, CheckReport& report);

}  // namespace quillon::lingomat::tools
