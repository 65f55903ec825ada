#pragma once

#include <string>
#include <vector>

namespace quillon::lingomat::cli {

// One thing to identify, or something the walk could not read.
struct InputItem {
  std::string path;          // as printed, and (unless walk_root is set) as opened
  std::string name;          // the file name handed to the engine
  bool is_stdin = false;     // read standard input instead of path
  bool skip_binary = false;  // found by walking a directory: binary files are left out
  // Set for a file found by walking: it is opened as `below` (a '/'-separated path) relative
  // to the walked directory `walk_root`, through no symbolic link (open_walked_file); only its
  // own link is followed, when `follow_link` says the walk found a link to a file.
  std::string walk_root;
  std::string below;
  bool follow_link = false;
  int list_error = 0;  // errno when path is a folder or ignore file the walk could not read
};

struct WalkOptions {
  std::vector<std::string> excludes;  // globs for names or paths below a walked directory
  bool honour_ignore_files = true;    // .gitignore and .ignore
};

// Expands the command-line paths (directories recursively) into items sorted
// by path, byte order, one per file: paths that differ only lexically ("./a"
// and "a") are one file, and a file named explicitly beats its walked copy.
std::vector<InputItem> collect_inputs(const std::vector<std::string>& paths,
                                      const std::string& stdin_name,
                                      const WalkOptions& walk_options = {});

}  // namespace quillon::lingomat::cli
