#include "common/split.h"

#include <algorithm>
#include <utility>

#include "common/options.h"
#include "common/tool_error.h"

namespace quillon::lingomat::tools {

std::uint64_t fnv1a_64(std::string_view bytes) {
  std::uint64_t hash = 14695981039346656037ULL;
  for (const char byte : bytes) {
    hash ^= static_cast<unsigned char>(byte);
    hash *= 1099511628211ULL;
  }
  return hash;
}

std::vector<std::string> test_projects(std::vector<std::string> projects, std::uint64_t folds,
                                       std::uint64_t fold) {
  if (projects.size() < 2) return {};
  std::vector<std::pair<std::uint64_t, std::string>> keyed;
  for (std::string& name : projects) {
    const std::uint64_t hash = fnv1a_64(name);
    keyed.emplace_back(hash, std::move(name));
  }
  std::sort(keyed.begin(), keyed.end());
  std::vector<std::string> held_out;
  for (std::size_t k = 0; k < keyed.size(); ++k) {
    if (k % folds == fold) held_out.push_back(keyed[k].second);
  }
  std::sort(held_out.begin(), held_out.end());
  return held_out;
}

std::vector<SampleFile> select_split(const LanguageSamples& language, const SplitRule& rule) {
  if (rule.side == SplitSide::kAll) return language.files;
  const std::vector<std::string> held_out =
      test_projects(language.projects(), rule.folds, rule.fold);
  const bool want_test = rule.side == SplitSide::kTest;
  std::vector<SampleFile> chosen;
  for (const SampleFile& file : language.files) {
    const bool is_test = std::binary_search(held_out.begin(), held_out.end(), file.project);
    if (is_test == want_test) chosen.push_back(file);
  }
  return chosen;
}

void SplitOptions::add_to(OptionParser& parser) {
  parser.add_string("split", "train|test|all",
                    "Use only the training side, only the held-out side, or all samples "
                    "(default all). The split is by project.",
                    &side_);
  parser.add_uint("folds", "N", "Number of folds of the split, at least 2 (default 3).", &folds_);
  parser.add_uint("fold", "I", "Which fold is held out, 0 to N-1 (default 0).", &fold_);
}

SplitRule SplitOptions::finish() const {
  SplitRule rule;
  if (side_ == "all") {
    rule.side = SplitSide::kAll;
  } else if (side_ == "train") {
    rule.side = SplitSide::kTrain;
  } else if (side_ == "test") {
    rule.side = SplitSide::kTest;
  } else {
    throw UsageError("--split: expected train, test or all, got '" + side_ + "'");
  }
  if (folds_ < 2) throw UsageError("--folds: expected at least 2, got " + std::to_string(folds_));
  if (fold_ >= folds_) {
    throw UsageError("--fold: expected 0 to " + std::to_string(folds_ - 1) + ", got " +
                     std::to_string(fold_));
  }
  rule.folds = folds_;
  rule.fold = fold_;
  return rule;
}

std::string describe(const SplitRule& rule) {
  const std::string fold = "fold " + std::to_string(rule.fold) + " of " +
                           std::to_string(rule.folds) + " held out by project";
  switch (rule.side) {
    case SplitSide::kTrain:
      return "training side, " + fold;
    case SplitSide::kTest:
      return "held-out side, " + fold;
    case SplitSide::kAll:
      break;
  }
  return "all samples";
}

}  // namespace quillon::lingomat::tools
