#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/engine.h"

namespace quillon::lingomat::cli {

// How many of the classifier's best languages an explanation shows.
inline constexpr std::size_t kExplainedLanguages = 5;

struct RankedLanguage {
  std::string language;
  double score = 0.0;
  double score_per_token = 0.0;
  bool above_floor = true;  // survives the --min-score floor
};

// Why the engine named a file as it did: what each strategy found, and the ranking.
struct Evidence {
  std::string name;  // the file name the strategies saw
  std::vector<std::string> by_filename;
  std::string interpreter;  // from the #! line; empty when none
  std::vector<std::string> by_interpreter;
  std::string extension;  // from the last '.'; empty when none
  std::vector<std::string> by_extension;
  std::vector<std::string> candidates;  // all of the above that --only allows
  std::size_t token_count = 0;
  std::uint64_t min_tokens = 0;         // the classifier stays silent below this
  double min_score_per_token = 0.0;     // the floor; 0 means off
  std::vector<RankedLanguage> ranking;  // best first, before the floor, one entry per language
  std::string decision;                 // "classifier", "first candidate" or "none"
};

// The engine's own record of one identification, as the tool shows it, with the floors that
// applied to it. `name` is the file name the engine was given.
Evidence explain_identification(const Lingomat::Trace& trace, const std::string& name);

}  // namespace quillon::lingomat::cli
