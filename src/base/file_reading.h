#pragma once

#include <unistd.h>

#include <cstddef>
#include <ios>
#include <string>
#include <system_error>

namespace quillon::lingomat {

// Owns an open file descriptor (or -1) and closes it, so that no error path leaks it.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  ~FileDescriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  int get() const { return fd_; }
  // Hands the descriptor over to the caller, who closes it.
  int release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }

 private:
  int fd_;
};

// The reason given for a path that names neither a regular file nor a directory.
inline constexpr const char* kNotRegularFile = "not a regular file";

// A read-only, blocking descriptor for `path` when it is a regular file (symbolic links
// followed), or -1 with the reason (the system's text, or kNotRegularFile) and its code.
// Opening never waits for a FIFO's writer nor makes a terminal the controlling one, and the
// kind is checked on the opened file itself, so it cannot change in between.
int open_regular_file(const std::string& path, std::string& reason, std::errc& code);

// A data file that cannot be read. A stream failure, as the library has always reported
// it, but its message states the reason once (the standard one appends the error code's
// text to a message that already holds it), and the bare reason is kept for callers that
// name the file themselves.
class DataFileError : public std::ios_base::failure {
 public:
  DataFileError(const std::string& path, const std::string& reason, std::error_code code);
  const char* what() const noexcept override { return message_.c_str(); }
  // "No such file or directory", "not a regular file", "larger than N bytes", ...
  const std::string& reason() const noexcept { return reason_; }

 private:
  std::string message_;
  std::string reason_;
};

// The largest data file the engine loads: 32 times the shipped one. Parsing costs several
// times the file's size in memory, so a bigger file is refused before any of it is read.
inline constexpr std::size_t kMaxDataFileBytes = std::size_t{256} << 20;

// The whole content of a regular file, read once through one descriptor (the file cannot
// change between a size check and the read, and nothing is opened twice). Anything else
// (a FIFO, a device such as /dev/zero, a directory) is refused without being read, since it
// may block or never end; so is a file longer than `max_bytes`. Every refusal, like a file
// that cannot be opened, is a DataFileError naming the reason.
std::string read_data_file(const std::string& path, std::size_t max_bytes = kMaxDataFileBytes);

}  // namespace quillon::lingomat
