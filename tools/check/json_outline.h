#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/token_hash.h"

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

  // The first member named `name`, as the engine finds it, or null. Objects looked up once
  // per language are indexed on first use, so checking stays linear in their size.
  const Member* find(const std::string& name) const;

 private:
  using Index = std::unordered_map<std::string_view, const Member*, KeyedStringHash>;
  // Moves along with the members it points into; a copy builds its own.
  struct LazyIndex {
    std::unique_ptr<Index> index;
    LazyIndex() = default;
    LazyIndex(const LazyIndex&) {}
    LazyIndex& operator=(const LazyIndex&) {
      index.reset();
      return *this;
    }
    LazyIndex(LazyIndex&&) = default;
    LazyIndex& operator=(LazyIndex&&) = default;
  };
  mutable LazyIndex index_;
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
