#include "file_reader.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillon::lingomat::cli {

namespace {

constexpr std::size_t kReadChunk = 64 * 1024;

ReadResult failed(int error) {
  ReadResult result;
  result.status = ReadStatus::kFailed;
  result.error = error;
  return result;
}

}  // namespace

bool looks_binary(const std::string& head) {
  const std::size_t length = std::min(head.size(), kBinarySniffBytes);
  return std::find(head.begin(), head.begin() + static_cast<std::ptrdiff_t>(length), '\0') !=
         head.begin() + static_cast<std::ptrdiff_t>(length);
}

ReadResult read_descriptor(int fd, bool stop_if_binary) {
  ReadResult result;
  std::string& content = result.content;
  struct stat info;
  if (::fstat(fd, &info) == 0) {
    if (S_ISDIR(info.st_mode)) return failed(EISDIR);
    if (S_ISREG(info.st_mode) && info.st_size > 0) {
      // One chunk of slack: the read that finds the end must not reallocate.
      content.reserve(static_cast<std::size_t>(info.st_size) + kReadChunk);
    }
  }
  bool sniffed = !stop_if_binary;
  while (true) {
    const std::size_t used = content.size();
    content.resize(used + kReadChunk);
    const ssize_t got = ::read(fd, &content[used], kReadChunk);
    if (got < 0) {
      content.resize(used);
      if (errno == EINTR) continue;
      return failed(errno);
    }
    content.resize(used + static_cast<std::size_t>(got));
    const bool at_end = got == 0;
    if (!sniffed && (at_end || content.size() >= kBinarySniffBytes)) {
      sniffed = true;
      if (looks_binary(content)) {
        result.status = ReadStatus::kBinary;
        content.clear();
        return result;
      }
    }
    if (at_end) break;
  }
  result.status = ReadStatus::kRead;
  return result;
}

ReadResult read_file(const std::string& path, bool stop_if_binary) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return failed(errno);
  ReadResult result = read_descriptor(fd, stop_if_binary);
  ::close(fd);
  return result;
}

}  // namespace quillon::lingomat::cli
