#include "walk_filter.h"

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>

#include <cerrno>
#include <sstream>

#include "common/file_io.h"
#include "json/file_descriptor.h"

namespace quillon::lingomat::cli {

namespace {

std::string base_name(const std::string& relative) {
  const auto slash = relative.rfind('/');
  return slash == std::string::npos ? relative : relative.substr(slash + 1);
}

bool glob_matches(const std::string& pattern, const std::string& text, int flags) {
  return ::fnmatch(pattern.c_str(), text.c_str(), flags) == 0;
}

// Reads the ignore file `name` of the folder `folder_fd` into `text`. A missing file, or a
// symbolic link (which git does not follow for these either), reads as empty; returns errno
// when the file exists but cannot be read.
int read_ignore_file(int folder_fd, const char* name, std::string& text) {
  text.clear();
  const FileDescriptor file(
      ::openat(folder_fd, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (file.get() < 0) return errno == ENOENT || errno == ELOOP ? 0 : errno;
  struct stat info {};
  if (::fstat(file.get(), &info) != 0) return errno;
  if (!S_ISREG(info.st_mode)) return 0;
  tools::ReadResult read = tools::try_read_descriptor(file.get());
  if (read.status != tools::ReadStatus::kRead) return EIO;
  text = std::move(read.content);
  return 0;
}

}  // namespace

WalkFilter::WalkFilter(std::vector<std::string> excludes, bool honour_ignore_files)
    : excludes_(std::move(excludes)), honour_ignore_files_(honour_ignore_files) {}

std::vector<IgnoreFileError> WalkFilter::enter_directory(int folder_fd,
                                                         const std::string& relative) {
  rules_before_.push_back(rules_.size());
  std::vector<IgnoreFileError> failures;
  if (!honour_ignore_files_) return failures;
  for (const char* name : {".gitignore", ".ignore"}) {
    std::string text;
    const int error = read_ignore_file(folder_fd, name, text);
    if (error != 0) failures.push_back({name, error});
    add_rules(text, relative);
  }
  return failures;
}

void WalkFilter::leave_directory() {
  rules_.resize(rules_before_.back());
  rules_before_.pop_back();
}

void WalkFilter::add_rules(const std::string& text, const std::string& base) {
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    // Trailing blanks are not part of a pattern unless escaped.
    while (!line.empty() && line.back() == ' ' &&
           (line.size() < 2 || line[line.size() - 2] != '\\')) {
      line.pop_back();
    }
    if (line.empty() || line[0] == '#') continue;
    Rule rule;
    rule.base = base;
    if (line[0] == '!') {
      rule.negated = true;
      line.erase(0, 1);
    } else if (line[0] == '\\') {
      line.erase(0, 1);  // "\#name", "\!name"
    }
    if (!line.empty() && line.back() == '/') {
      rule.directories_only = true;
      line.pop_back();
    }
    if (line.rfind("**/", 0) == 0 && line.find('/', 3) == std::string::npos) line.erase(0, 3);
    rule.anchored = line.find('/') != std::string::npos;
    if (!line.empty() && line[0] == '/') line.erase(0, 1);
    if (line.empty()) continue;
    rule.pattern = line;
    rules_.push_back(std::move(rule));
  }
}

bool WalkFilter::ignored(const std::string& relative, bool is_directory) const {
  bool result = false;
  for (const Rule& rule : rules_) {
    if (rule.directories_only && !is_directory) continue;
    if (!rule.base.empty() && relative.rfind(rule.base + '/', 0) != 0) continue;
    const std::string below = rule.base.empty() ? relative : relative.substr(rule.base.size() + 1);
    bool matches = false;
    if (rule.anchored) {
      // "**" may cross folders; otherwise a "*" stays within one.
      const bool across = rule.pattern.find("**") != std::string::npos;
      matches = glob_matches(rule.pattern, below, across ? 0 : FNM_PATHNAME);
    } else {
      matches = glob_matches(rule.pattern, base_name(below), 0);
    }
    if (matches) result = !rule.negated;
  }
  return result;
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
