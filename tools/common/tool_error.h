#pragma once

#include <stdexcept>
#include <string>

namespace quillon::lingomat::tools {

// Bad input or a failed file operation: reported to the user, exit status 1.
class ToolError : public std::runtime_error {
 public:
  explicit ToolError(const std::string& message) : std::runtime_error(message) {}
};

// A malformed command line: reported with a hint to --help, exit status 2.
class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace quillon::lingomat::tools
