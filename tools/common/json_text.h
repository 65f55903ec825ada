#pragma once

#include <string>
#include <string_view>

#include <rapidjson/rapidjson.h>

#include "common/utf8.h"

namespace quillon::lingomat::tools {

// Writes `text` as a JSON string with any rapidjson writer. JSON holds only Unicode, and
// paths and names may hold any bytes: ill-formed ones become U+FFFD.
template <typename Writer>
void write_json_string(Writer& writer, std::string_view text) {
  const std::string valid = sanitize_utf8(text);
  writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
}

// The same, with null for an empty text (no language, no name).
template <typename Writer>
void write_json_string_or_null(Writer& writer, std::string_view text) {
  if (text.empty()) {
    writer.Null();
  } else {
    write_json_string(writer, text);
  }
}

}  // namespace quillon::lingomat::tools
