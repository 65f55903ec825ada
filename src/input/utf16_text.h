#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillon::lingomat {

// True when `content` starts with a UTF-16 byte-order mark (FF FE or FE FF).
bool starts_with_utf16_bom(std::string_view content);

// `content` (which starts with a UTF-16 byte-order mark) as UTF-8, without the mark, since
// the engine's patterns and statistics are byte-oriented UTF-8. Unpaired surrogates and a
// dangling last byte become U+FFFD.
std::string utf16_to_utf8(std::string_view content);

struct Utf16Prefix {
  std::string text;       // UTF-8
  bool complete = false;  // the whole of `content` was decoded
};

// The first `max_units` code units of `content` as utf16_to_utf8 decodes them (a surrogate
// pair is never split): the UTF-8 is the start of the whole conversion.
Utf16Prefix utf16_prefix_to_utf8(std::string_view content, std::size_t max_units);

}  // namespace quillon::lingomat
