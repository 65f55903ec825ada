#include "common/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "common/tool_error.h"

namespace quillon::lingomat::tools {

namespace {

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
    throw ToolError("cannot write output file " + target + ": " + std::strerror(error));
  }

 private:
  std::string path_;
  int fd_ = -1;
};

// mkstemp creates files readable by the owner only; a data file is for everyone.
void apply_default_permissions(int fd) {
  const mode_t mask = umask(0);
  umask(mask);
  fchmod(fd, 0666 & ~mask);
}

}  // namespace

std::string read_file(const std::string& path, const std::string& what) {
  const auto fail = [&](int error) -> std::string {
    throw ToolError("cannot read " + what + " " + path + ": " + std::strerror(error));
  };
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return fail(errno);
  struct stat info {};
  if (fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    close(fd);
    return fail(EISDIR);
  }
  std::string content;
  char buffer[65536];
  for (;;) {
    const ssize_t got = read(fd, buffer, sizeof buffer);
    if (got == 0) break;
    if (got < 0) {
      if (errno == EINTR) continue;
      const int error = errno;
      close(fd);
      return fail(error);
    }
    content.append(buffer, static_cast<std::size_t>(got));
  }
  close(fd);
  return content;
}

void write_file_atomically(const std::string& path, const std::string& content) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) TemporaryFile::fail(path, EISDIR);
  TemporaryFile temporary(path);
  apply_default_permissions(temporary.fd());
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
