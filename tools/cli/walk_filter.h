#pragma once

#include <string>
#include <vector>

namespace quillon::lingomat::cli {

// An ignore file that exists but could not be read.
struct IgnoreFileError {
  std::string name;  // ".gitignore"
  int error = 0;     // errno
};

// Decides which walked files and folders are left out: those matching an --exclude glob,
// and (unless turned off) those excluded by the .gitignore and .ignore files met on the way,
// read the way git reads them: "#" comments, "!" to take a pattern back, a trailing "/"
// for folders only, a "/" elsewhere to anchor at the file's folder, "**" across folders;
// the last matching pattern decides. A folder's rules apply only below it, and are dropped
// when the walk leaves it, so each path is tried against the rules of its own folders only.
class WalkFilter {
 public:
  WalkFilter(std::vector<std::string> excludes, bool honour_ignore_files);

  // Reads the ignore files of the folder open as `folder_fd`, whose path below the walked
  // root is `relative`; the ones that exist but cannot be read are returned.
  std::vector<IgnoreFileError> enter_directory(int folder_fd, const std::string& relative);
  // Drops the rules of the folder entered last.
  void leave_directory();

  // `relative` is the path below the walked root ("src/a.c").
  bool skipped(const std::string& relative, bool is_directory) const;

 private:
  struct Rule {
    std::string base;  // folder of the ignore file, below the root; "" for the root
    std::string pattern;
    bool negated = false;
    bool directories_only = false;
    bool anchored = false;
  };

  void add_rules(const std::string& text, const std::string& base);
  bool ignored(const std::string& relative, bool is_directory) const;

  std::vector<std::string> excludes_;
  bool honour_ignore_files_;
  std::vector<Rule> rules_;
  std::vector<std::size_t> rules_before_;  // rules_.size() when each open folder was entered
};

}  // namespace quillon::lingomat::cli
