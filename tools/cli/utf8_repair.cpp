#include "utf8_repair.h"

namespace quillon::lingomat::cli {

namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

bool is_continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Length of the well-formed sequence starting at `i`, or 0 (overlongs,
// surrogates and code points above U+10FFFF are not well-formed).
std::size_t sequence_length(const std::string& text, std::size_t i) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[i + k]); };
  const unsigned char lead = byte(0);
  const std::size_t left = text.size() - i;
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return left >= 2 && is_continuation(byte(1)) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    if (left < 3 || !is_continuation(byte(1)) || !is_continuation(byte(2))) return 0;
    if (lead == 0xE0 && byte(1) < 0xA0) return 0;   // overlong
    if (lead == 0xED && byte(1) >= 0xA0) return 0;  // surrogate
    return 3;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    if (left < 4 || !is_continuation(byte(1)) || !is_continuation(byte(2)) ||
        !is_continuation(byte(3))) {
      return 0;
    }
    if (lead == 0xF0 && byte(1) < 0x90) return 0;   // overlong
    if (lead == 0xF4 && byte(1) >= 0x90) return 0;  // above U+10FFFF
    return 4;
  }
  return 0;
}

}  // namespace

std::string to_valid_utf8(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = sequence_length(text, i);
    if (length == 0) {
      out += kReplacement;
      ++i;
    } else {
      out.append(text, i, length);
      i += length;
    }
  }
  return out;
}

}  // namespace quillon::lingomat::cli
