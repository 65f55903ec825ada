#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/definitions.h"
#include "common/samples_tree.h"
#include "train/train_config.h"

namespace quillon::lingomat::tools {

// The languages a data file describes and the samples it is trained on.
struct TrainingSet {
  std::vector<LanguageDefinition> languages;  // definitions order
  // files[i] are the samples of languages[i]; empty for a language without samples.
  std::vector<std::vector<SampleFile>> files;
};

// Matches the samples tree against the definitions and applies --only,
// the split and the per-language cap. Throws ToolError for a samples folder
// whose language is not defined and for an --only name that is not defined.
TrainingSet select_training_set(const LanguageDefinitions& definitions,
                                const std::vector<LanguageSamples>& tree,
                                const TrainConfig& config);

// At most `limit` files (0: all), chosen by FNV-1a hash of their relative
// path: spread over the projects, and stable when other files come and go.
// The result keeps the input order.
std::vector<SampleFile> cap_samples(const std::vector<SampleFile>& files, std::uint64_t limit);

}  // namespace quillon::lingomat::tools
