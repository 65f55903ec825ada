#include "common/samples_tree.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "common/tool_error.h"

namespace quillon::lingomat::tools {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail_listing(const fs::path& folder, const std::error_code& error) {
  throw ToolError("cannot list folder " + folder.string() + ": " + error.message());
}

// The entries of one folder, sorted by name so that walks are reproducible.
std::vector<fs::directory_entry> sorted_entries(const fs::path& folder) {
  std::error_code error;
  fs::directory_iterator it(folder, error);
  if (error) fail_listing(folder, error);
  std::vector<fs::directory_entry> entries;
  for (; it != fs::directory_iterator(); it.increment(error)) {
    if (error) fail_listing(folder, error);
    entries.push_back(*it);
  }
  if (error) fail_listing(folder, error);
  std::sort(entries.begin(), entries.end(),
            [](const auto& a, const auto& b) { return a.path().filename() < b.path().filename(); });
  return entries;
}

bool is_folder(const fs::directory_entry& entry) {
  std::error_code ignored;
  return entry.is_directory(ignored);  // follows symbolic links
}

// Every non-folder below `folder`, depth first. A dangling link is kept, so
// that reading it later reports it rather than silently losing a sample.
void collect_files(const fs::path& folder, const std::string& relative,
                   std::vector<SampleFile>& files, const std::string& project) {
  for (const fs::directory_entry& entry : sorted_entries(folder)) {
    const std::string name = entry.path().filename().string();
    const std::string below = relative + "/" + name;
    if (is_folder(entry)) {
      if (entry.is_symlink()) continue;  // a linked folder could loop back
      collect_files(entry.path(), below, files, project);
    } else {
      files.push_back(SampleFile{project, below, entry.path().string()});
    }
  }
}

LanguageSamples walk_language(const fs::directory_entry& folder) {
  LanguageSamples language{folder.path().filename().string(), folder.path().string(), {}};
  for (const fs::directory_entry& entry : sorted_entries(folder.path())) {
    const std::string name = entry.path().filename().string();
    if (!is_folder(entry)) {
      throw ToolError("sample " + entry.path().string() +
                      " is not inside a project folder (expected <samples>/" + language.language +
                      "/<project>/.../<file>)");
    }
    collect_files(entry.path(), name, language.files, name);
  }
  if (language.files.empty()) {
    throw ToolError("language folder " + language.path + " holds no sample file");
  }
  std::sort(
      language.files.begin(), language.files.end(),
      [](const SampleFile& a, const SampleFile& b) { return a.relative_path < b.relative_path; });
  return language;
}

}  // namespace

std::vector<std::string> LanguageSamples::projects() const {
  std::vector<std::string> names;
  for (const SampleFile& file : files) names.push_back(file.project);
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

std::vector<LanguageSamples> walk_samples(const std::string& root) {
  std::error_code error;
  if (!fs::is_directory(root, error)) {
    throw ToolError("samples folder " + root + " " +
                    (fs::exists(root, error) ? "is not a folder" : "does not exist"));
  }
  std::vector<LanguageSamples> languages;
  for (const fs::directory_entry& entry : sorted_entries(root)) {
    if (!is_folder(entry)) {
      throw ToolError("samples folder " + root + " holds the file " +
                      entry.path().filename().string() +
                      ", but only one folder per language belongs there");
    }
    languages.push_back(walk_language(entry));
  }
  std::sort(
      languages.begin(), languages.end(),
      [](const LanguageSamples& a, const LanguageSamples& b) { return a.language < b.language; });
  return languages;
}

}  // namespace quillon::lingomat::tools
