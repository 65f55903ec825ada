#pragma once

#include <stdexcept>

namespace quillon::lingomat {

// The one error type for a data file whose content is malformed or not shaped as expected.
class JsonException : public std::runtime_error {
 public:
  explicit JsonException(const char* message) : std::runtime_error(message) {}
};

}  // namespace quillon::lingomat
