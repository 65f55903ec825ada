#include "input/utf16_text.h"

#include <cstdint>

namespace quillon::lingomat {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void append_utf8(std::string& out, char32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

bool is_high_surrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool is_low_surrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

}  // namespace

bool starts_with_utf16_bom(std::string_view content) {
  return content.size() >= 2 && ((content[0] == '\xFF' && content[1] == '\xFE') ||
                                 (content[0] == '\xFE' && content[1] == '\xFF'));
}

std::string utf16_to_utf8(std::string_view content) {
  return utf16_prefix_to_utf8(content, content.size()).text;
}

Utf16Prefix utf16_prefix_to_utf8(std::string_view content, std::size_t max_units) {
  const bool little_endian = content[0] == '\xFF';
  const auto unit_at = [&](std::size_t pos) -> char32_t {
    const auto first = static_cast<std::uint8_t>(content[pos]);
    const auto second = static_cast<std::uint8_t>(content[pos + 1]);
    return little_endian ? (second << 8 | first) : (first << 8 | second);
  };
  // Past the last unit to decode; a pair that straddles it is decoded whole below.
  const std::size_t stop =
      max_units < (content.size() - 2) / 2 ? 2 + 2 * max_units : content.size();
  Utf16Prefix prefix;
  std::string& out = prefix.text;
  out.reserve(stop);
  std::size_t pos = 2;
  for (; pos + 1 < content.size() && pos < stop; pos += 2) {
    const char32_t unit = unit_at(pos);
    if (is_high_surrogate(unit) && pos + 3 < content.size() && is_low_surrogate(unit_at(pos + 2))) {
      append_utf8(out, 0x10000 + ((unit - 0xD800) << 10) + (unit_at(pos + 2) - 0xDC00));
      pos += 2;
    } else if (is_high_surrogate(unit) || is_low_surrogate(unit)) {
      append_utf8(out, kReplacement);
    } else {
      append_utf8(out, unit);
    }
  }
  prefix.complete = pos + 1 >= content.size();
  if (prefix.complete && pos < content.size()) append_utf8(out, kReplacement);
  return prefix;
}

}  // namespace quillon::lingomat
