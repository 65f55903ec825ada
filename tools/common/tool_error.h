#pragma once

#include <stdexcept>
#include <string>

namespace quillon::lingomat::tools {

// Bad input or a failed file operation: reported to the user as "<tool>: <message>".
// The exit status is 1 unless the tool documents another for this failure.
class ToolError : public std::runtime_error {
 public:
  explicit ToolError(const std::string& message, int exit_status = 1)
      : std::runtime_error(message), exit_status_(exit_status) {}
  int exit_status() const { return exit_status_; }

 private:
  int exit_status_;
};

// A malformed command line: reported with a hint to --help, exit status 2.
class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace quillon::lingomat::tools
