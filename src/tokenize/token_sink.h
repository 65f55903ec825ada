#pragma once

#include <cstddef>
#include <string>
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
  // A token built on the side; valid only during the call.
  void add_copy(std::string_view token) {
    ++count_;
    take_copy(token);
  }
  // The token `head` followed by `tail` (a shebang or tag-name token), which a sink that
  // needs no copy of it can take without one.
  void add_joined(std::string_view head, std::string_view tail) {
    ++count_;
    take_joined(head, tail);
  }
  std::size_t count() const { return count_; }

 protected:
  virtual void take_view(std::string_view token) = 0;
  virtual void take_copy(std::string_view token) = 0;
  virtual void take_joined(std::string_view head, std::string_view tail) {
    std::string token;
    token.reserve(head.size() + tail.size());
    token.append(head).append(tail);
    take_copy(token);
  }

 private:
  std::size_t count_ = 0;
};

}  // namespace quillon::lingomat
