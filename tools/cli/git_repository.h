#pragma once

#include <optional>
#include <string>

namespace quillon::lingomat::cli {

// Where git keeps the ignore rules of the work tree that holds a folder.
struct GitWorkTree {
  std::string top;            // the work tree's top folder, absolute
  std::string below_top;      // the folder's own path below `top` ("" for the top itself)
  std::string info_exclude;   // the repository's info/exclude file
  std::string excludes_file;  // core.excludesFile, or git's default for it
};

// The work tree that holds `folder`, found as git finds it: the nearest folder above (or at)
// it with a ".git" folder, or a ".git" file naming one ("gitdir: ..."). core.excludesFile
// comes from the system, global and repository configuration files, the last one to set it
// winning; included files are not followed.
std::optional<GitWorkTree> find_git_work_tree(const std::string& folder);

}  // namespace quillon::lingomat::cli
