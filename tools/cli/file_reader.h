#pragma once

#include <cstddef>
#include <string>

namespace quillon::lingomat::cli {

// A NUL byte this early means the file is binary, not text in any language.
inline constexpr std::size_t kBinarySniffBytes = 8192;

enum class ReadStatus { kRead, kBinary, kFailed };

struct ReadResult {
  ReadStatus status = ReadStatus::kFailed;
  std::string content;  // the whole file when kRead
  int error = 0;        // errno when kFailed
};

bool looks_binary(const std::string& head);

// Reads the whole file (or standard input for fd 0). With stop_if_binary, a
// file whose first kBinarySniffBytes hold a NUL is abandoned as kBinary.
ReadResult read_file(const std::string& path, bool stop_if_binary);
ReadResult read_descriptor(int fd, bool stop_if_binary);

}  // namespace quillon::lingomat::cli
