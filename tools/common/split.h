#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/samples_tree.h"

namespace quillon::lingomat::tools {

class OptionParser;

// Which side of the by-project split a run uses. The rule is shared by the
// trainer and the evaluator so that a held-out project is never trained on.
enum class SplitSide { kAll, kTrain, kTest };

struct SplitRule {
  SplitSide side = SplitSide::kAll;
  std::uint64_t folds = 3;
  std::uint64_t fold = 0;
};

std::uint64_t fnv1a_64(std::string_view bytes);

// The projects on the test side: sorted by FNV-1a 64-bit hash of the name
// (ties by name), the project at index k is held out iff k % folds == fold.
// Fewer than two projects: none is held out.
std::vector<std::string> test_projects(std::vector<std::string> projects, std::uint64_t folds,
                                       std::uint64_t fold);

// The files of `language` on the rule's side, in their original order.
std::vector<SampleFile> select_split(const LanguageSamples& language, const SplitRule& rule);

// The --split, --folds and --fold options; add_to() before parsing, finish() after.
class SplitOptions {
 public:
  void add_to(OptionParser& parser);
  // Checks the values (folds >= 2, fold < folds) and returns the rule.
  SplitRule finish() const;

 private:
  std::string side_ = "all";
  std::uint64_t folds_ = 3;
  std::uint64_t fold_ = 0;
};

std::string describe(const SplitRule& rule);

}  // namespace quillon::lingomat::tools
