#pragma once

#include <string>
#include <vector>

#include "eval/eval_config.h"
#include "eval/eval_report.h"
#include "eval/score_trace.h"

namespace quillon::lingomat::tools {

// The outcome of one evaluation run: one report per identification mode.
struct EvalRun {
  std::vector<ModeReport> modes;                 // "content", then "filename"
  std::vector<std::string> untrained_languages;  // in the test set, without statistics
  unsigned threads = 1;
  double wall_seconds = 0;         // the whole identification phase, file reading included
  std::vector<ScoreTrace> traces;  // two per file when asked for, content first
};

// Loads the engine, identifies every labelled file twice (content only, and
// with its own file name) and aggregates the answers. Throws ToolError for an
// unusable data file or test set.
EvalRun run_evaluation(const EvalConfig& config);

}  // namespace quillon::lingomat::tools
