#include "input_collector.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>

#include "tree_walker.h"

namespace quillon::lingomat::cli {

namespace fs = std::filesystem;

namespace {

std::string file_name_of(const std::string& path) { return fs::path(path).filename().string(); }

// The items to identify, one per file however many arguments reach it. Paths
// are compared in their lexically normal form ("./src/a.c" is "src/a.c"), but
// printed as given or as walked. Of two items for one file the one named on
// the command line wins over one found by walking (it is identified even when
// binary); otherwise the first stays.
class ItemSet {
 public:
  void add(InputItem item) {
    if (item.is_stdin) {
      items_.push_back(std::move(item));
      return;
    }
    const std::string key = fs::path(item.path).lexically_normal().string();
    const auto [found, inserted] = positions_.emplace(key, items_.size());
    if (inserted) {
      items_.push_back(std::move(item));
      return;
    }
    InputItem& kept = items_[found->second];
    const bool kept_was_walked = kept.skip_binary;
    if (kept_was_walked && !item.skip_binary) kept = std::move(item);
  }

  std::vector<InputItem> sorted() && {
    std::stable_sort(items_.begin(), items_.end(),
                     [](const InputItem& a, const InputItem& b) { return a.path < b.path; });
    return std::move(items_);
  }

 private:
  std::vector<InputItem> items_;
  std::map<std::string, std::size_t> positions_;
};

}  // namespace

std::vector<InputItem> collect_inputs(const std::vector<std::string>& paths,
                                      const std::string& stdin_name,
                                      const WalkOptions& walk_options) {
  ItemSet items;
  for (const std::string& path : paths) {
    if (path == "-") {
      InputItem item;
      item.path = path;
      item.name = stdin_name.empty() ? std::string() : file_name_of(stdin_name);
      item.is_stdin = true;
      items.add(std::move(item));
      continue;
    }
    std::error_code error;
    if (fs::is_directory(path, error)) {
      std::vector<InputItem> walked;
      walk_tree(path, walk_options, walked);
      for (InputItem& item : walked) items.add(std::move(item));
      continue;
    }
    // Anything else is opened as named; a missing file is reported when it is read.
    InputItem item;
    item.path = path;
    item.name = file_name_of(path);
    items.add(std::move(item));
  }
  return std::move(items).sorted();
}

}  // namespace quillon::lingomat::cli
