#pragma once

#include <cstddef>
#include <string>

#include "eval/eval_config.h"
#include "eval/evaluation.h"

namespace quillon::lingomat::tools {

// The report for people: a summary, a per-language table and the most
// frequent confusions (at most `max_confusions`) for each mode.
std::string format_text_report(const EvalConfig& config, const EvalRun& run,
                               std::size_t max_confusions);

// The same as one JSON object, every confusion included, for scripts.
std::string format_json_report(const EvalConfig& config, const EvalRun& run);

}  // namespace quillon::lingomat::tools
