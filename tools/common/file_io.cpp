#include "common/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "common/tool_error.h"

namespace quillon::lingomat::tools {

namespace {

constexpr std::size_t kReadChunk = 64 * 1024;

// The system's text for an errno value; unlike strerror, safe on any thread.
std::string errno_text(int error) { return std::generic_category().message(error); }

ReadResult failed(std::string reason) {
  ReadResult result;
  result.status = ReadStatus::kFailed;
  result.error = std::move(reason);
  return result;
}

// The process's umask, read once before main() while no other thread can be
// creating files: the only way to read it is to set it, and a file created in
// between would get no mask at all. Temporary files are then given the mode
// an ordinary new file would have, without touching the umask again.
const mode_t kProcessUmask = [] {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mask;
}();

// Closes the descriptor and removes the temporary file unless released.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& target) : path_(target + ".tmp.XXXXXX") {
    std::vector<char> name(path_.begin(), path_.end());
    name.push_back('\0');
    fd_ = mkstemp(name.data());
    if (fd_ < 0) fail(target, errno);
    path_ = name.data();
  }
  ~TemporaryFile() {
    if (fd_ >= 0) close(fd_);
    if (!path_.empty()) unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  int fd() const { return fd_; }
  const std::string& path() const { return path_; }

  int close_descriptor() {
    const int result = close(fd_);
    fd_ = -1;
    return result;
  }
  void release() { path_.clear(); }

  [[noreturn]] static void fail(const std::string& target, int error) {
    throw ToolError("cannot write output file " + target + ": " + errno_text(error));
  }

 private:
  std::string path_;
  int fd_ = -1;
};

}  // namespace

ReadResult try_read_descriptor(int fd, bool stop_if_binary) {
  ReadResult result;
  std::string& content = result.content;
  struct stat info {};
  if (::fstat(fd, &info) == 0) {
    if (S_ISDIR(info.st_mode)) return failed(errno_text(EISDIR));
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
      const int error = errno;
      content.resize(used);
      if (error == EINTR) continue;
      return failed(errno_text(error));
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

ReadResult try_read_file(const std::string& path, bool stop_if_binary) {
  std::string reason;
  const int fd = open_regular_file(path, reason);
  if (fd < 0) return failed(std::move(reason));
  ReadResult result = try_read_descriptor(fd, stop_if_binary);
  ::close(fd);
  return result;
}

std::string read_file(const std::string& path, const std::string& what) {
  ReadResult result = try_read_file(path);
  if (result.status != ReadStatus::kRead) {
    throw ToolError("cannot read " + what + " " + path + ": " + result.error);
  }
  return std::move(result.content);
}

void write_file_atomically(const std::string& path, const std::string& content) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) TemporaryFile::fail(path, EISDIR);
  TemporaryFile temporary(path);
  // mkstemp creates files for the owner only; a data file is for whoever the umask allows.
  if (fchmod(temporary.fd(), 0666 & ~kProcessUmask) != 0) TemporaryFile::fail(path, errno);
  const char* data = content.data();
  std::size_t left = content.size();
  while (left > 0) {
    const ssize_t written = write(temporary.fd(), data, left);
    if (written < 0) {
      if (errno == EINTR) continue;
      TemporaryFile::fail(path, errno);
    }
    data += written;
    left -= static_cast<std::size_t>(written);
  }
  if (fsync(temporary.fd()) != 0) TemporaryFile::fail(path, errno);
  if (temporary.close_descriptor() != 0) TemporaryFile::fail(path, errno);
  if (rename(temporary.path().c_str(), path.c_str()) != 0) TemporaryFile::fail(path, errno);
  temporary.release();
}

}  // namespace quillon::lingomat::tools
