#pragma once

#include <string>
#include <string_view>

namespace quillon::lingomat::tools {

// True when `text` is well-formed UTF-8 (no overlong forms, surrogates or
// code points above U+10FFFF). NUL bytes are valid.
bool is_valid_utf8(std::string_view text);

// `text` with every ill-formed byte replaced by U+FFFD, for names that must
// appear in JSON or on a terminal.
std::string sanitize_utf8(std::string_view text);

}  // namespace quillon::lingomat::tools
