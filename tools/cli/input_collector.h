#pragma once

#include <string>
#include <vector>

namespace quillon::lingomat::cli {

// One thing to identify, or a directory that could not be listed.
struct InputItem {
  std::string path;          // as printed, and as opened
  std::string name;          // the file name handed to the engine
  bool is_stdin = false;     // read standard input instead of path
  bool skip_binary = false;  // found by walking a directory: binary files are left out
  int list_error = 0;        // errno when path is a directory that could not be listed
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
