#pragma once

#include <string>
#include <vector>

#include "ignore_rules.h"

namespace quillon::lingomat::cli {

// An ignore file that exists but could not be read.
struct IgnoreFileError {
  std::string name;  // ".gitignore"
  int error = 0;     // errno
};

// Decides which walked files and folders are left out: those matching an --exclude glob,
// and (unless turned off) those that ignore files exclude. Inside a git work tree these are
// git's own: the .gitignore of every folder from the work tree's top down (also above the
// walked folder), the repository's info/exclude and core.excludesFile; a .ignore beside a
// .gitignore is read with it and outranks it. Elsewhere only the walked folders' .gitignore
// and .ignore files count. A folder's rules apply below it only and are dropped when the
// walk leaves it, so a path is tried against the rules of its own folders only.
class WalkFilter {
 public:
  // `root` is the walked folder, as named.
  WalkFilter(const std::string& root, std::vector<std::string> excludes, bool honour_ignore_files);

  // Reads the ignore files of the folder open as `folder_fd`, whose path below the walked
  // root is `relative`; the ones that exist but cannot be read are returned.
  std::vector<IgnoreFileError> enter_directory(int folder_fd, const std::string& relative);
  // Drops the rules of the folder entered last.
  void leave_directory();

  // `relative` is the path below the walked root ("src/a.c").
  bool skipped(const std::string& relative, bool is_directory) const;

 private:
  // The rules of one folder, the more important last.
  using FolderRules = std::vector<IgnoreRules>;

  FolderRules read_folder(int folder_fd, const std::string& base,
                          std::vector<IgnoreFileError>* failures) const;
  bool ignored(const std::string& relative, bool is_directory) const;

  std::vector<std::string> excludes_;
  bool honour_ignore_files_;
  std::string prefix_;  // the walked root's path below the work tree's top, with a '/'
  std::vector<FolderRules> folders_;  // from the top down to the folder being walked
  FolderRules repository_rules_;      // core.excludesFile, then info/exclude
};

}  // namespace quillon::lingomat::cli
