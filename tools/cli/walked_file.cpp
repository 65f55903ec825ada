#include "walked_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
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

// The folder of the last file a thread opened, kept open for the next files of that folder.
class FolderCache {
 public:
  FolderCache() = default;
  FolderCache(const FolderCache&) = delete;
  FolderCache& operator=(const FolderCache&) = delete;
  ~FolderCache() { forget(); }

  // The descriptor of `folder` below `root` if it is the one kept, else -1.
  int find(const std::string& root, std::string_view folder) const {
    return fd_ >= 0 && root == root_ && folder == folder_ ? fd_ : -1;
  }
  // Keeps `fd`, which it closes in time, as the folder `folder` below `root`.
  void keep(const std::string& root, std::string_view folder, int fd) {
    forget();
    root_ = root;
    folder_ = folder;
    fd_ = fd;
  }
  void forget() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
  }

 private:
  std::string root_;
  std::string folder_;
  int fd_ = -1;
};

thread_local FolderCache t_folder;

// Opens `folder` (empty: the root itself) below `root`, one level at a time; -1 with the
// reason when a level cannot be opened as a folder.
int open_folder(const std::string& root, std::string_view folder, std::string& reason) {
  int fd = ::open(root.c_str(), kFolderFlags);
  if (fd < 0) {
    reason = errno_text(errno);
    return -1;
  }
  std::size_t start = 0;
  while (start < folder.size()) {
    std::size_t slash = folder.find('/', start);
    if (slash == std::string_view::npos) slash = folder.size();
    const std::string part(folder.substr(start, slash - start));
    const int next = ::openat(fd, part.c_str(), kFolderFlags | O_NOFOLLOW);
    const int error = errno;
    ::close(fd);
    if (next < 0) {
      reason = open_failure(error);
      return -1;
    }
    fd = next;
    start = slash + 1;
  }
  return fd;
}

}  // namespace

int open_walked_file(const InputItem& item, std::string& reason, std::uint64_t& size) {
  const std::size_t last_slash = item.below.rfind('/');
  const std::string_view folder = last_slash == std::string::npos
                                      ? std::string_view()
                                      : std::string_view(item.below).substr(0, last_slash);
  const char* name = item.below.c_str() + (last_slash == std::string::npos ? 0 : last_slash + 1);
  int folder_fd = t_folder.find(item.walk_root, folder);
  if (folder_fd < 0) {
    t_folder.forget();
    folder_fd = open_folder(item.walk_root, folder, reason);
    if (folder_fd < 0) return -1;
    t_folder.keep(item.walk_root, folder, folder_fd);
  }
  // Non-blocking, so that a FIFO put in the file's place cannot hang the open. A regular
  // file ignores the flag, so it stays set.
  const int flags =
      O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | (item.follow_link ? 0 : O_NOFOLLOW);
  const int fd = ::openat(folder_fd, name, flags);
  if (fd < 0) {
    reason = open_failure(errno);
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
    size = static_cast<std::uint64_t>(info.st_size);
    return fd;
  }
  ::close(fd);
  return -1;
}

}  // namespace quillon::lingomat::cli
