#include "common/utf8.h"

#include <cstdint>

namespace quillon::lingomat::tools {

namespace {

// Length of the well-formed sequence starting at `pos`, or 0 when it is ill-formed.
std::size_t sequence_length(std::string_view text, std::size_t pos) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = byte(pos);
  if (lead < 0x80) return 1;

  std::size_t length = 0;
  std::uint8_t low = 0x80;  // allowed range of the second byte
  std::uint8_t high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;   // overlong
    if (lead == 0xED) high = 0x9F;  // surrogates
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;   // overlong
    if (lead == 0xF4) high = 0x8F;  // above U+10FFFF
  } else {
    return 0;
  }
  if (pos + length > text.size()) return 0;
  if (byte(pos + 1) < low || byte(pos + 1) > high) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if (byte(pos + i) < 0x80 || byte(pos + i) > 0xBF) return 0;
  }
  return length;
}

}  // namespace

bool is_valid_utf8(std::string_view text) {
  for (std::size_t pos = 0; pos < text.size();) {
    const std::size_t length = sequence_length(text, pos);
    if (length == 0) return false;
    pos += length;
  }
  return true;
}

std::string sanitize_utf8(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t pos = 0; pos < text.size();) {
    const std::size_t length = sequence_length(text, pos);
    if (length == 0) {
      result += "\xEF\xBF\xBD";
      ++pos;
    } else {
      result.append(text.substr(pos, length));
      pos += length;
    }
  }
  return result;
}

}  // namespace quillon::lingomat::tools
