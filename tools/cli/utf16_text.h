#pragma once

#include <string>
#include <string_view>

namespace quillon::lingomat::cli {

// True when `content` starts with a UTF-16 byte-order mark (FF FE or FE FF).
bool starts_with_utf16_bom(std::string_view content);

// `content` (which starts with a UTF-16 byte-order mark) as UTF-8, without the mark, since
// the engine's patterns and statistics are byte-oriented UTF-8. Unpaired surrogates and a
// dangling last byte become U+FFFD.
std::string utf16_to_utf8(std::string_view content);

}  // namespace quillon::lingomat::cli
