#pragma once

#include <string>

namespace quillon::lingomat::cli {

// `text` with every byte that is not part of a well-formed UTF-8 sequence
// replaced by U+FFFD, so file names in any encoding still make valid JSON.
std::string to_valid_utf8(const std::string& text);

}  // namespace quillon::lingomat::cli
