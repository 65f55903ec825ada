#pragma once

#include <cstddef>
#include <string_view>

namespace quillon::lingomat {

// A NUL byte this early means the file is binary, not text in any language.
inline constexpr std::size_t kBinarySniffBytes = 8192;

// True when the first kBinarySniffBytes of `head` hold a NUL byte, unless `head` starts
// with a UTF-16 byte-order mark.
bool looks_binary(std::string_view head);

}  // namespace quillon::lingomat
