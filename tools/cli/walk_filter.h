#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quillon::lingomat::cli {

// Decides which walked files and folders are left out: those matching an --exclude glob,
// and (unless turned off) those excluded by the .gitignore and .ignore files met on the way,
// read the way git reads them: "#" comments, "!" to take a pattern back, a trailing "/"
// for folders only, a "/" elsewhere to anchor at the file's folder, "**" across folders;
// the last matching pattern decides.
class WalkFilter {
 public:
  WalkFilter(std::vector<std::string> excludes, bool honour_ignore_files);

  // Reads the ignore files of `directory`, whose path below the walked root is `relative`.
  void enter_directory(const std::filesystem::path& directory, const std::string& relative);

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

  void add_rules(const std::filesystem::path& file, const std::string& base);
  bool ignored(const std::string& relative, bool is_directory) const;

  std::vector<std::string> excludes_;
  bool honour_ignore_files_;
  std::vector<Rule> rules_;
};

}  // namespace quillon::lingomat::cli
