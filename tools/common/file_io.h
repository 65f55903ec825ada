#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/file_reading.h"
#include "input/binary_text.h"

namespace quillon::lingomat::tools {

// Shared with the Python package, which skips binary files as the tool does.
using lingomat::kBinarySniffBytes;
using lingomat::looks_binary;

enum class ReadStatus { kRead, kBinary, kFailed };

struct ReadResult {
  ReadStatus status = ReadStatus::kFailed;
  std::string content;  // the whole file when kRead
  std::string error;    // the reason when kFailed ("No such file or directory", ...)
};

using lingomat::kNotRegularFile;

// open_regular_file() of the library, for callers that need only the reason.
inline int open_regular_file(const std::string& path, std::string& reason) {
  std::errc ignored{};
  return lingomat::open_regular_file(path, reason, ignored);
}

// Reads a whole regular file, following symbolic links. Anything else named
// (a directory, a device such as /dev/zero, a FIFO) fails without being read,
// since it may never end or block forever. With stop_if_binary, a file whose
// first kBinarySniffBytes hold a NUL is abandoned as kBinary.
ReadResult try_read_file(const std::string& path, bool stop_if_binary = false);

// Reads a descriptor to its end, whatever it is (standard input may be a pipe);
// only a directory fails.
ReadResult try_read_descriptor(int fd, bool stop_if_binary = false);

// The whole content of a file. `what` names the file's role in the message of
// the ToolError thrown when it cannot be read ("cannot read <what> <path>: <reason>").
std::string read_file(const std::string& path, const std::string& what);

// Replaces `path` with `content` all at once: the bytes go to a temporary file
// in the same folder, which is renamed over `path` only when complete. On
// failure the temporary file is removed, `path` is untouched, and a ToolError
// names the file.
void write_file_atomically(const std::string& path, const std::string& content);

}  // namespace quillon::lingomat::tools
