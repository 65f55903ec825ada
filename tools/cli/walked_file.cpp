#include "walked_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "common/file_io.h"

namespace quillon::lingomat::cli {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

std::string errno_text(int error) { return std::generic_category().message(error); }

// A link or a non-folder where the walk saw a folder or a plain file means the tree changed.
std::string open_failure(int error) {
  if (error == ELOOP || error == ENOTDIR) return "changed while walking (links are not followed)";
  return errno_text(error);
}

}  // namespace

int open_walked_file(const InputItem& item, std::string& reason) {
  int folder = ::open(item.walk_root.c_str(), kFolderFlags);
  if (folder < 0) {
    reason = errno_text(errno);
    return -1;
  }
  std::size_t start = 0;
  for (std::size_t slash; (slash = item.below.find('/', start)) != std::string::npos;
       start = slash + 1) {
    const std::string part = item.below.substr(start, slash - start);
    const int next = ::openat(folder, part.c_str(), kFolderFlags | O_NOFOLLOW);
    const int error = errno;
    ::close(folder);
    if (next < 0) {
      reason = open_failure(error);
      return -1;
    }
    folder = next;
  }
  // Non-blocking, so that a FIFO put in the file's place cannot hang the open.
  const int flags =
      O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | (item.follow_link ? 0 : O_NOFOLLOW);
  const int fd = ::openat(folder, item.below.c_str() + start, flags);
  const int error = errno;
  ::close(folder);
  if (fd < 0) {
    reason = open_failure(error);
    return -1;
  }
  struct stat info {};
  if (::fstat(fd, &info) != 0) {
    reason = errno_text(errno);
  } else if (S_ISDIR(info.st_mode)) {
    reason = errno_text(EISDIR);
  } else if (!S_ISREG(info.st_mode)) {
    reason = tools::kNotRegularFile;
  } else {
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    return fd;
  }
  ::close(fd);
  return -1;
}

}  // namespace quillon::lingomat::cli
