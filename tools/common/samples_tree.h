#pragma once

#include <string>
#include <vector>

namespace quillon::lingomat::tools {

// One sample file of a samples tree <root>/<Language>/<project>/<any path>/<file>.
struct SampleFile {
  std::string project;        // the project folder's name
  std::string relative_path;  // below the language folder, '/'-separated, project first
  std::string path;           // the path to open
};

// The files of one language folder, sorted by relative path.
struct LanguageSamples {
  std::string language;  // the folder's name, which is the language's name
  std::string path;
  std::vector<SampleFile> files;

  std::vector<std::string> projects() const;  // sorted, each once
};

// Walks a samples tree; the result is sorted by language name. Throws
// ToolError for a root that is not a folder, a file where a language or
// project folder belongs, a language folder without any file, and
// folders that cannot be listed. Project folders without files are ignored.
std::vector<LanguageSamples> walk_samples(const std::string& root);

}  // namespace quillon::lingomat::tools
