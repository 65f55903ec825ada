#include "check/json_outline.h"

#include <limits>
#include <string_view>
#include <unordered_map>

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include "common/utf8.h"

namespace quillon::lingomat::tools {

const JsonNode::Member* JsonNode::find(const std::string& name) const {
  constexpr std::size_t kWorthIndexing = 16;
  if (members.size() < kWorthIndexing) {
    for (const Member& member : members) {
      if (member.name == name) return &member;
    }
    return nullptr;
  }
  if (index_.index == nullptr) {
    index_.index = std::make_unique<Index>();
    index_.index->reserve(members.size());
    // emplace keeps the first of equal names.
    for (const Member& member : members) index_.index->emplace(member.name, &member);
  }
  const auto found = index_.index->find(name);
  return found == index_.index->end() ? nullptr : found->second;
}

namespace {

std::string quoted(std::string_view text) { return "\"" + sanitize_utf8(text) + "\""; }

class OutlineBuilder {
 public:
  OutlineBuilder(const std::string& text, const rapidjson::StringStream& stream, JsonNode& root,
                 CheckReport& report)
      : text_(text), stream_(stream), root_(root), report_(report) {}

  bool Null() { return add(JsonNode::Kind::kNull); }
  bool Bool(bool) { return add(JsonNode::Kind::kBool); }
  bool Int(int value) { return add_number(true, value); }
  bool Uint(unsigned value) {
    return add_number(value <= static_cast<unsigned>(std::numeric_limits<int>::max()), value);
  }
  bool Int64(std::int64_t) { return add_number(false, 0); }
  bool Uint64(std::uint64_t) { return add_number(false, 0); }
  bool Double(double) { return add_number(false, 0); }
  bool RawNumber(const char*, rapidjson::SizeType, bool) { return add_number(false, 0); }

  bool String(const char* data, rapidjson::SizeType length, bool) {
    const std::size_t offset = token_start();
    JsonNode* node = add_node(JsonNode::Kind::kString, offset);
    if (node != nullptr) node->text.assign(data, length);
    return true;
  }

  bool Key(const char* data, rapidjson::SizeType length, bool) {
    const std::size_t offset = token_start();
    const std::string name(data, length);
    Frame& frame = frames_.back();
    const auto [previous, inserted] = frame.names.emplace(name, offset);
    if (!inserted) {
      const LineIndex& lines = line_index();
      report_.error(offset, "duplicate member name " + quoted(name) + " (first at line " +
                                std::to_string(lines.line(previous->second)) + ", column " +
                                std::to_string(lines.column(previous->second)) +
                                "); the engine reads only the first");
    }
    pending_name_ = name;
    pending_name_offset_ = offset;
    return true;
  }

  bool StartObject() { return open(JsonNode::Kind::kObject); }
  bool StartArray() { return open(JsonNode::Kind::kArray); }
  bool EndObject(rapidjson::SizeType) { return close(); }
  bool EndArray(rapidjson::SizeType) { return close(); }

 private:
  struct Frame {
    JsonNode* node;  // null beyond kOutlineDepth
    std::unordered_map<std::string, std::size_t> names;
  };

  // The iterative reader raises each event before it moves past the token, strings and
  // numbers included (they are read through a copy of the stream), so the stream's position
  // is where the token starts.
  std::size_t token_start() const { return stream_.Tell(); }

  bool add(JsonNode::Kind kind) {
    add_node(kind, token_start());
    return true;
  }

  bool add_number(bool is_int, std::int64_t value) {
    JsonNode* node = add_node(JsonNode::Kind::kNumber, token_start());
    if (node != nullptr) {
      node->is_int = is_int;
      node->int_value = value;
    }
    return true;
  }

  bool open(JsonNode::Kind kind) {
    JsonNode* node = add_node(kind, token_start());
    frames_.push_back({node, {}});
    return true;
  }

  bool close() {
    frames_.pop_back();
    return true;
  }

  // Appends a value to the innermost open container; null when that is beyond the kept depth.
  JsonNode* add_node(JsonNode::Kind kind, std::size_t offset) {
    JsonNode* node = nullptr;
    if (frames_.empty()) {
      node = &root_;
    } else if (frames_.size() < kOutlineDepth && frames_.back().node != nullptr) {
      JsonNode& parent = *frames_.back().node;
      if (parent.kind == JsonNode::Kind::kObject) {
        parent.members.push_back({pending_name_, pending_name_offset_, {}});
        node = &parent.members.back().value;
      } else {
        parent.elements.emplace_back();
        node = &parent.elements.back();
      }
    }
    if (node != nullptr) {
      node->kind = kind;
      node->offset = offset;
    }
    return node;
  }

  const LineIndex& line_index() {
    if (lines_.empty()) lines_.emplace_back(text_);
    return lines_.front();
  }

  const std::string& text_;
  const rapidjson::StringStream& stream_;
  JsonNode& root_;
  CheckReport& report_;
  std::vector<Frame> frames_;
  std::string pending_name_;
  std::size_t pending_name_offset_ = 0;
  std::vector<LineIndex> lines_;  // built on the first duplicate only
};

}  // namespace

bool read_outline(const std::string& text, JsonNode& root, CheckReport& report) {
  rapidjson::StringStream stream(text.c_str());
  OutlineBuilder builder(text, stream, root, report);
  rapidjson::Reader reader;
  const rapidjson::ParseResult result =
      reader.Parse<rapidjson::kParseIterativeFlag>(stream, builder);
  if (!result) {
    report.error(result.Offset(), GetParseError_En(result.Code()));
    return false;
  }
  return true;
}

}  // namespace quillon::lingomat::tools
