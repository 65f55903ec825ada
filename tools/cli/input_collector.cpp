#include "input_collector.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

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
void walk_directory(const fs::path& root, std::vector<InputItem>& items) {
  std::vector<fs::path> pending{root};
  while (!pending.empty()) {
    const fs::path directory = std::move(pending.back());
    pending.pop_back();
    std::error_code error;
    fs::directory_iterator it(directory, error);
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
      const fs::directory_entry& entry = *it;
      std::error_code status_error;
      const fs::file_status own = entry.symlink_status(status_error);
      if (status_error) continue;
      if (fs::is_directory(own)) {
        if (!is_version_control_folder(entry.path().filename().string())) {
          pending.push_back(entry.path());
        }
      } else if (fs::is_regular_file(own) ||
                 (fs::is_symlink(own) && fs::is_regular_file(entry.status(status_error)))) {
        items.push_back(walked_file(entry.path()));
      }
    }
    if (error) items.push_back(unlistable_directory(directory, error));
  }
}

}  // namespace

std::vector<InputItem> collect_inputs(const std::vector<std::string>& paths,
                                      const std::string& stdin_name) {
  std::vector<InputItem> items;
  for (const std::string& path : paths) {
    if (path == "-") {
      InputItem item;
      item.path = path;
      item.name = stdin_name.empty() ? std::string() : file_name_of(stdin_name);
      item.is_stdin = true;
      items.push_back(std::move(item));
      continue;
    }
    std::error_code error;
    if (fs::is_directory(path, error)) {
      walk_directory(path, items);
      continue;
    }
    // Anything else is opened as named; a missing file is reported when it is read.
    InputItem item;
    item.path = path;
    item.name = file_name_of(path);
    items.push_back(std::move(item));
  }
  std::stable_sort(items.begin(), items.end(),
                   [](const InputItem& a, const InputItem& b) { return a.path < b.path; });
  items.erase(std::unique(items.begin(), items.end(),
                          [](const InputItem& a, const InputItem& b) { return a.path == b.path; }),
              items.end());
  return items;
}

}  // namespace quillon::lingomat::cli
