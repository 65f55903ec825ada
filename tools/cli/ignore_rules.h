#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillon::lingomat::cli {

// The patterns of one ignore file, read the way git reads them.
class IgnoreRules {
 public:
  IgnoreRules() = default;
  // `text` is the file's content; `base` its folder, relative to where paths are measured
  // from ("" for the top, else "src/lib" without a trailing '/').
  IgnoreRules(std::string_view text, std::string base);

  // The verdict of the last pattern that matches `path` (relative to the same top as `base`):
  // true to ignore, false when a "!" pattern takes it back, nothing when none matches.
  std::optional<bool> verdict(std::string_view path, bool is_directory) const;

  bool empty() const { return patterns_.empty(); }

 private:
  struct Pattern {
    std::string glob;
    bool negated = false;
    bool directories_only = false;  // written with a trailing '/'
    bool name_only = false;         // no '/' in it: matches a name at any depth
  };

  void add_line(std::string line);

  std::string base_;
  std::vector<Pattern> patterns_;
};

}  // namespace quillon::lingomat::cli
