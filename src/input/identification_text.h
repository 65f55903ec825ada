#pragma once

#include <string>
#include <string_view>

#include "tokenize/tokenizer.h"

namespace quillon::lingomat {

// What identification reads of a file's bytes: the bytes themselves, or, after a UTF-16
// byte-order mark, their UTF-8 conversion as far as the tokenizer reads it. The answer is
// the one the whole conversion would give, but a huge UTF-16 file costs what is read of it.
class IdentificationText {
 public:
  // `content` must outlive this object when it is not UTF-16.
  IdentificationText(std::string_view content, const Tokenizer& tokenizer);

  std::string_view view() const { return view_; }
  bool decoded() const { return decoded_; }

 private:
  std::string converted_;
  std::string_view view_;
  bool decoded_ = false;
};

}  // namespace quillon::lingomat
