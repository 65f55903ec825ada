#include "train/sample_selection.h"

#include <algorithm>
#include <map>

#include "common/tool_error.h"

namespace quillon::lingomat::tools {

std::vector<SampleFile> cap_samples(const std::vector<SampleFile>& files, std::uint64_t limit) {
  if (limit == 0 || files.size() <= limit) return files;
  std::vector<std::size_t> order(files.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::vector<std::uint64_t> hashes;
  for (const SampleFile& file : files) hashes.push_back(fnv1a_64(file.relative_path));
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    if (hashes[a] != hashes[b]) return hashes[a] < hashes[b];
    return files[a].relative_path < files[b].relative_path;
  });
  order.resize(limit);
  std::sort(order.begin(), order.end());
  std::vector<SampleFile> chosen;
  for (const std::size_t i : order) chosen.push_back(files[i]);
  return chosen;
}

TrainingSet select_training_set(const LanguageDefinitions& definitions,
                                const std::vector<LanguageSamples>& tree,
                                const TrainConfig& config) {
  std::map<std::string, const LanguageSamples*> folders;
  for (const LanguageSamples& language : tree) {
    if (definitions.find(language.language) == nullptr) {
      throw ToolError("samples folder " + language.path + " is for the language '" +
                      language.language + "', which definitions file " + config.definitions_path +
                      " does not define");
    }
    folders[language.language] = &language;
  }
  for (const std::string& name : config.only) {
    if (definitions.find(name) == nullptr) {
      throw ToolError("--only " + name + ": definitions file " + config.definitions_path +
                      " has no [" + name + "] section");
    }
  }

  TrainingSet set;
  for (const LanguageDefinition& language : definitions.languages()) {
    if (!config.only.empty() &&
        std::find(config.only.begin(), config.only.end(), language.name) == config.only.end()) {
      continue;
    }
    set.languages.push_back(language);
    const auto folder = folders.find(language.name);
    if (folder == folders.end()) {
      set.files.emplace_back();
    } else {
      set.files.push_back(
          cap_samples(select_split(*folder->second, config.split), config.max_samples));
    }
  }
  return set;
}

}  // namespace quillon::lingomat::tools
