#include "json/json_reader.h"

#include <cstdint>
#include <string>

#include <rapidjson/reader.h>

#include "base/file_reading.h"
#include "json/nesting_limits.h"

namespace quillon::lingomat {
namespace {

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

  // The ordinary parser with its default flags, as Document::Parse would run it; the
  // iterative one needs no stack, but memory for every level.
  return parse_nesting_safely<JsonDocument>([&](JsonDocument& document, bool iterative,
                                                std::size_t limit, rapidjson::ParseResult& result) {
    return iterative ? parse_within<rapidjson::kParseIterativeFlag>(text, document, limit, result)
                     : parse_within<rapidjson::kParseDefaultFlags>(text, document, limit, result);
  });
}

std::string json_string(const JsonValue& value) {
  if (!value.IsString()) throw JsonException(kNotAString);
  return std::string(value.GetString(), value.GetStringLength());
}

}  // namespace quillon::lingomat
