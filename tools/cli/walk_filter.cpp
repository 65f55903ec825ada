#include "walk_filter.h"

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>

#include <cerrno>

#include "base/file_reading.h"
#include "common/file_io.h"
#include "git_repository.h"

namespace quillon::lingomat::cli {

namespace {

constexpr const char* kIgnoreFiles[] = {".gitignore", ".ignore"};

std::string base_name(const std::string& relative) {
  const auto slash = relative.rfind('/');
  return slash == std::string::npos ? relative : relative.substr(slash + 1);
}

bool glob_matches(const std::string& pattern, const std::string& text, int flags) {
  return ::fnmatch(pattern.c_str(), text.c_str(), flags) == 0;
}

// Reads the ignore file `name` (relative to `folder_fd`) into `text`. A missing file reads as
// empty, and so does a symbolic link unless `follow` (git does not follow the ones in the
// work tree either); returns errno when the file exists but cannot be read.
int read_ignore_file(int folder_fd, const char* name, bool follow, std::string& text) {
  text.clear();
  const int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | (follow ? 0 : O_NOFOLLOW);
  const FileDescriptor file(::openat(folder_fd, name, flags));
  if (file.get() < 0) return errno == ENOENT || errno == ELOOP || errno == ENOTDIR ? 0 : errno;
  struct stat info {};
  if (::fstat(file.get(), &info) != 0) return errno;
  if (!S_ISREG(info.st_mode)) return 0;
  tools::ReadResult read = tools::try_read_descriptor(file.get());
  if (read.status != tools::ReadStatus::kRead) return EIO;
  text = std::move(read.content);
  return 0;
}

IgnoreRules read_rules(const std::string& file, const std::string& base) {
  std::string text;
  read_ignore_file(AT_FDCWD, file.c_str(), true, text);
  return IgnoreRules(text, base);
}

}  // namespace

WalkFilter::WalkFilter(const std::string& root, std::vector<std::string> excludes,
                       bool honour_ignore_files)
    : excludes_(std::move(excludes)), honour_ignore_files_(honour_ignore_files) {
  if (!honour_ignore_files_) return;
  const std::optional<GitWorkTree> tree = find_git_work_tree(root);
  if (!tree) return;
  repository_rules_.push_back(read_rules(tree->excludes_file, ""));
  repository_rules_.push_back(read_rules(tree->info_exclude, ""));
  if (tree->below_top.empty()) return;
  prefix_ = tree->below_top + '/';
  // The folders above the walked one, from the top down: their rules reach into it.
  std::string base;
  std::size_t start = 0;
  for (;;) {
    const FileDescriptor folder(
        ::open((tree->top + '/' + base).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.get() >= 0) folders_.push_back(read_folder(folder.get(), base, nullptr));
    const std::size_t slash = tree->below_top.find('/', start);
    if (slash == std::string::npos) break;
    base = tree->below_top.substr(0, slash);
    start = slash + 1;
  }
}

WalkFilter::FolderRules WalkFilter::read_folder(int folder_fd, const std::string& base,
                                                std::vector<IgnoreFileError>* failures) const {
  FolderRules rules;
  for (const char* name : kIgnoreFiles) {
    std::string text;
    const int error = read_ignore_file(folder_fd, name, false, text);
    if (error != 0 && failures != nullptr) failures->push_back({name, error});
    if (!text.empty()) rules.emplace_back(text, base);
  }
  return rules;
}

std::vector<IgnoreFileError> WalkFilter::enter_directory(int folder_fd,
                                                         const std::string& relative) {
  std::vector<IgnoreFileError> failures;
  if (!honour_ignore_files_) return failures;
  std::string base = prefix_ + relative;
  if (!base.empty() && base.back() == '/') base.pop_back();
  folders_.push_back(read_folder(folder_fd, base, &failures));
  return failures;
}

void WalkFilter::leave_directory() {
  if (honour_ignore_files_) folders_.pop_back();
}

// As git decides: the deepest folder with a matching pattern, then info/exclude, then
// core.excludesFile; within one file the last matching pattern.
bool WalkFilter::ignored(const std::string& relative, bool is_directory) const {
  const std::string path = prefix_ + relative;
  for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
    for (auto rules = folder->rbegin(); rules != folder->rend(); ++rules) {
      if (const std::optional<bool> verdict = rules->verdict(path, is_directory)) return *verdict;
    }
  }
  for (auto rules = repository_rules_.rbegin(); rules != repository_rules_.rend(); ++rules) {
    if (const std::optional<bool> verdict = rules->verdict(path, is_directory)) return *verdict;
  }
  return false;
}

bool WalkFilter::skipped(const std::string& relative, bool is_directory) const {
  for (const std::string& glob : excludes_) {
    if (glob_matches(glob, base_name(relative), 0) || glob_matches(glob, relative, FNM_PATHNAME)) {
      return true;
    }
  }
  return honour_ignore_files_ && ignored(relative, is_directory);
}

}  // namespace quillon::lingomat::cli
