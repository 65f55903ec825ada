#include "json/json_reader.h"

#include <cstdint>

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include "base/file_reading.h"

namespace quillon::lingomat {
namespace {

// The ordinary parser recurses once per nesting level, so a hostile file of a million
// brackets would exhaust the stack, even a small host thread's at a few hundred. Real data
// files nest three levels; a file that nests deeper than this is parsed again by the
// iterative parser, which accepts and rejects the same documents.
constexpr std::size_t kRecursionSafeDepth = 32;
// Deeper documents are refused: each level costs the parser memory, so a file of nothing but
// '[' would otherwise take many times its size before failing. No data file nests anywhere
// near this deep.
constexpr std::size_t kMaxDepth = 1000;  // as the message says

// Hands every parse event on to the document, but stops the parse once arrays and objects
// nest deeper than the limit. Watching the parse costs nothing measurable; a scan of the
// text before it cost a sixth of loading.
class DepthLimit {
 public:
  DepthLimit(JsonDocument& document, std::size_t limit) : document_(document), limit_(limit) {}

  bool Null() { return document_.Null(); }
  bool Bool(bool value) { return document_.Bool(value); }
  bool Int(int value) { return document_.Int(value); }
  bool Uint(unsigned value) { return document_.Uint(value); }
  bool Int64(std::int64_t value) { return document_.Int64(value); }
  bool Uint64(std::uint64_t value) { return document_.Uint64(value); }
  bool Double(double value) { return document_.Double(value); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool copy) {
    return document_.RawNumber(text, length, copy);
  }
  bool String(const char* text, rapidjson::SizeType length, bool copy) {
    return document_.String(text, length, copy);
  }
  bool Key(const char* text, rapidjson::SizeType length, bool copy) {
    return document_.Key(text, length, copy);
  }
  bool StartObject() { return enter() && document_.StartObject(); }
  bool EndObject(rapidjson::SizeType members) {
    --depth_;
    return document_.EndObject(members);
  }
  bool StartArray() { return enter() && document_.StartArray(); }
  bool EndArray(rapidjson::SizeType elements) {
    --depth_;
    return document_.EndArray(elements);
  }

  bool too_deep() const { return depth_ > limit_; }

 private:
  bool enter() { return ++depth_ <= limit_; }

  JsonDocument& document_;
  std::size_t limit_;
  std::size_t depth_ = 0;
};

// Parses `text` into `document` with `kFlags`; false when it nests deeper than `limit`.
template <unsigned kFlags>
bool parse_within(const std::string& text, JsonDocument& document, std::size_t limit,
                  rapidjson::ParseResult& result) {
  bool too_deep = false;
  auto generate = [&](JsonDocument& handler) {
    DepthLimit limited(handler, limit);
    rapidjson::StringStream stream(text.c_str());
    rapidjson::Reader reader;
    result = reader.Parse<kFlags>(stream, limited);
    too_deep = limited.too_deep();
    return !result.IsError();
  };
  document.Populate(generate);
  return !too_deep;
}

}  // namespace

JsonDocument parse_json_file(const std::string& path) {
  const std::string text = read_data_file(path);

  // The ordinary parser with its default flags, as Document::Parse would run it.
  JsonDocument document;
  rapidjson::ParseResult result;
  if (!parse_within<rapidjson::kParseDefaultFlags>(text, document, kRecursionSafeDepth, result)) {
    // The iterative parser needs no stack, but memory for every level: past the most any
    // data file needs, the file is refused where it gets that deep.
    JsonDocument deep;
    if (!parse_within<rapidjson::kParseIterativeFlag>(text, deep, kMaxDepth, result)) {
      throw JsonException("nested deeper than 1000 levels");
    }
    if (result.IsError()) throw JsonException(rapidjson::GetParseError_En(result.Code()));
    return deep;
  }
  if (result.IsError()) throw JsonException(rapidjson::GetParseError_En(result.Code()));
  return document;
}

std::string json_string(const JsonValue& value) {
  if (!value.IsString()) throw JsonException(kNotAString);
  return std::string(value.GetString(), value.GetStringLength());
}

}  // namespace quillon::lingomat
