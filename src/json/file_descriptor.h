#pragma once

#include <unistd.h>

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

 private:
  int fd_;
};

}  // namespace quillon::lingomat
