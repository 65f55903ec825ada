#include "tree_walker.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>

#include "base/file_reading.h"
#include "walk_filter.h"

namespace quillon::lingomat::cli {

namespace {

// Folders that hold a version-control system's own files, not the project's.
constexpr std::array<const char*, 6> kVersionControlFolders = {".git", ".hg", ".svn",
                                                               ".bzr", "CVS", "_darcs"};

bool is_version_control_folder(const std::string& name) {
  return std::find(kVersionControlFolders.begin(), kVersionControlFolders.end(), name) !=
         kVersionControlFolders.end();
}

std::string joined(const std::string& folder, const std::string& name) {
  return folder.empty() ? name : folder + '/' + name;
}

// The walk holds one descriptor per level of the current folder; a deep tree needs more
// than the usual soft limit of 1024, so it is raised to the hard limit once.
void allow_deep_trees() {
  static const bool raised = [] {
    struct rlimit limit {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
    limit.rlim_cur = limit.rlim_max;
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
  }();
  (void)raised;
}

enum class EntryKind { kFolder, kFile, kLinkToFile, kOther };

// What the entry `name` of the folder `folder_fd` is, looking at the entry itself; a link
// counts as a file only when it leads to a regular file.
EntryKind kind_of(int folder_fd, const dirent& entry) {
  unsigned char type = entry.d_type;
  if (type == DT_UNKNOWN) {
    struct stat info {};
    if (::fstatat(folder_fd, entry.d_name, &info, AT_SYMLINK_NOFOLLOW) != 0)
      return EntryKind::kOther;
    type = S_ISDIR(info.st_mode)   ? DT_DIR
           : S_ISREG(info.st_mode) ? DT_REG
           : S_ISLNK(info.st_mode) ? DT_LNK
                                   : DT_UNKNOWN;
  }
  if (type == DT_DIR) return EntryKind::kFolder;
  if (type == DT_REG) return EntryKind::kFile;
  if (type != DT_LNK) return EntryKind::kOther;
  struct stat target {};
  const bool to_file =
      ::fstatat(folder_fd, entry.d_name, &target, 0) == 0 && S_ISREG(target.st_mode);
  return to_file ? EntryKind::kLinkToFile : EntryKind::kOther;
}

class TreeWalk {
 public:
  TreeWalk(const std::string& root, const WalkOptions& options, std::vector<InputItem>& items)
      : root_(root), filter_(root, options.excludes, options.honour_ignore_files), items_(items) {}

  void run() {
    const int fd = ::open(root_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return report("", errno);
    enter(fd, "");
    while (!frames_.empty()) {
      Frame& top = frames_.back();
      if (top.next == top.folders.size()) {
        frames_.pop_back();
        filter_.leave_directory();
        continue;
      }
      const std::string& name = top.folders[top.next++];
      const std::string below = joined(top.below, name);
      const int child =
          ::openat(top.fd->get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
      if (child >= 0) {
        enter(child, below);
      } else if (errno != ELOOP && errno != ENOTDIR && errno != ENOENT) {
        // Gone, or swapped for a link or a file since it was listed: not a folder to walk.
        report(below, errno);
      }
    }
  }

 private:
  struct Frame {
    std::unique_ptr<FileDescriptor> fd;
    std::string below;
    std::vector<std::string> folders;  // to walk next
    std::size_t next = 0;
  };

  std::string path_of(const std::string& below) const {
    return below.empty() ? root_ : (std::filesystem::path(root_) / below).string();
  }

  void report(const std::string& below, int error) {
    InputItem item;
    item.path = path_of(below);
    item.list_error = error;
    items_.push_back(std::move(item));
  }

  void add_file(const std::string& below, const std::string& name, bool link) {
    InputItem item;
    item.path = path_of(below);
    item.name = name;
    item.skip_binary = true;
    item.walk_root = root_;
    item.below = below;
    item.follow_link = link;
    items_.push_back(std::move(item));
  }

  // Lists the folder `fd` (taking it over), adds its files and keeps its folders for later.
  void enter(int fd, const std::string& below) {
    Frame frame;
    frame.fd = std::make_unique<FileDescriptor>(fd);
    frame.below = below;
    for (const IgnoreFileError& failed : filter_.enter_directory(fd, below)) {
      report(joined(below, failed.name), failed.error);
    }
    // The listing gets its own descriptor: closedir closes it, and `fd` stays for openat.
    const int listing_fd = ::dup(fd);
    DIR* listing = listing_fd >= 0 ? ::fdopendir(listing_fd) : nullptr;
    if (listing == nullptr) {
      const int error = errno;
      if (listing_fd >= 0) ::close(listing_fd);
      report(below, error);
      filter_.leave_directory();
      return;
    }
    for (;;) {
      errno = 0;
      const dirent* entry = ::readdir(listing);
      if (entry == nullptr) {
        if (errno != 0) report(below, errno);
        break;
      }
      const std::string name = entry->d_name;
      if (name == "." || name == "..") continue;
      const std::string path = joined(below, name);
      const EntryKind kind = kind_of(fd, *entry);
      switch (kind) {
        case EntryKind::kFolder:
          if (!is_version_control_folder(name) && !filter_.skipped(path, true)) {
            frame.folders.push_back(name);
          }
          break;
        case EntryKind::kFile:
        case EntryKind::kLinkToFile:
          if (!filter_.skipped(path, false)) {
            add_file(path, name, kind == EntryKind::kLinkToFile);
          }
          break;
        case EntryKind::kOther:
          break;
      }
    }
    ::closedir(listing);
    frames_.push_back(std::move(frame));
  }

  const std::string root_;
  WalkFilter filter_;
  std::vector<InputItem>& items_;
  std::vector<Frame> frames_;
};

}  // namespace

void walk_tree(const std::string& root, const WalkOptions& options, std::vector<InputItem>& items) {
  allow_deep_trees();
  TreeWalk(root, options, items).run();
}

}  // namespace quillon::lingomat::cli
