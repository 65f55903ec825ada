#include "input_collector.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <system_error>

#include "walk_filter.h"

namespace quillon::lingomat::cli {

namespace fs = std::filesystem;

namespace {

// Folders that hold a version-control system's own files, not the project's.
constexpr std::array<const char*, 6> kVersionControlFolders = {".git", ".hg", ".svn",
                                                               ".bzr", "CVS", "_darcs"};

bool is_version_control_folder(const std::string& name) {
  return std::find(kVersionControlFolders.begin(), kVersionControlFolders.end(), name) !=
         kVersionControlFolders.end();
}

std::string file_name_of(const std::string& path) { return fs::path(path).filename().string(); }

InputItem walked_file(const fs::path& path) {
  InputItem item;
  item.path = path.string();
  item.name = path.filename().string();
  item.skip_binary = true;
  return item;
}

InputItem unlistable_directory(const fs::path& path, const std::error_code& error) {
  InputItem item;
  item.path = path.string();
  item.list_error = error.value();
  return item;
}

// Regular files below root, following symlinks to files but not to directories
// (which could loop). Sockets, FIFOs and dangling links are left out.
// What the walk filter leaves out is neither listed nor, for a folder, entered.
void walk_directory(const fs::path& root, const WalkOptions& options,
                    std::vector<InputItem>& items) {
  WalkFilter filter(options.excludes, options.honour_ignore_files);
  // Each folder with its path below the root ("" for the root itself).
  std::vector<std::pair<fs::path, std::string>> pending{{root, ""}};
  while (!pending.empty()) {
    const auto [directory, relative] = std::move(pending.back());
    pending.pop_back();
    filter.enter_directory(directory, relative);
    std::error_code error;
    fs::directory_iterator it(directory, error);
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
      const fs::directory_entry& entry = *it;
      std::error_code status_error;
      const fs::file_status own = entry.symlink_status(status_error);
      if (status_error) continue;
      const std::string name = entry.path().filename().string();
      const std::string below = relative.empty() ? name : relative + '/' + name;
      if (fs::is_directory(own)) {
        if (!is_version_control_folder(name) && !filter.skipped(below, true)) {
          pending.emplace_back(entry.path(), below);
        }
      } else if (fs::is_regular_file(own) ||
                 (fs::is_symlink(own) && fs::is_regular_file(entry.status(status_error)))) {
        if (!filter.skipped(below, false)) items.push_back(walked_file(entry.path()));
      }
    }
    if (error) items.push_back(unlistable_directory(directory, error));
  }
}

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
      walk_directory(path, walk_options, walked);
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
