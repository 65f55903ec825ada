#include "input/binary_text.h"

#include "input/utf16_text.h"

namespace quillon::lingomat {

bool looks_binary(std::string_view head) {
  // A UTF-16 byte-order mark announces text, however many NUL bytes follow.
  if (starts_with_utf16_bom(head)) return false;
  return head.substr(0, kBinarySniffBytes).find('\0') != std::string_view::npos;
}

}  // namespace quillon::lingomat
