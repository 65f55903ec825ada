#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/option_defaults.h"
#include "common/split.h"
#include "engine/engine.h"

namespace quillon::lingomat::tools {

// Everything one evaluation run needs, as given on the command line.
struct EvalConfig {
  std::string data_path;
  std::string samples_root;
  Tokenizer::Opts tokenizer;  // engine defaults
  std::uint64_t min_tokens = defaults::kMinTokens;
  double min_score_per_token = defaults::kMinScorePerToken;  // 0 switches the floor off
  std::vector<std::string> only;  // empty: every language of the test set
  bool restrict_to_only = false;  // the engine allows only the `only` languages
  SplitRule split;
  unsigned threads = 1;
  bool progress = false;
  bool trace_scores = false;  // fill EvalRun::traces
};

}  // namespace quillon::lingomat::tools
