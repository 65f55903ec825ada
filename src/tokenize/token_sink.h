#pragma once

#include <cstddef>
#include <string_view>

namespace quillon::lingomat {

// Receives the tokens of one text in order, so that callers can take them as views instead of
// one heap string per token.
class TokenSink {
 public:
  virtual ~TokenSink() = default;

  // A token that stays valid as long as the text being tokenized.
  void add_view(std::string_view token) {
    ++count_;
    take_view(token);
  }
  // A token built on the side (a shebang or tag-name token); valid only during the call.
  void add_copy(std::string_view token) {
    ++count_;
    take_copy(token);
  }
  std::size_t count() const { return count_; }

 protected:
  virtual void take_view(std::string_view token) = 0;
  virtual void take_copy(std::string_view token) = 0;

 private:
  std::size_t count_ = 0;
};

}  // namespace quillon::lingomat
