#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/engine.h"

namespace quillon::lingomat::tools {

// One candidate's score split in two: what the seen tokens and the prior
// contribute, and how many tokens the language never saw. The engine's score
// is seen_score + unseen_tokens * ln(1 / tokens_total), so the trace lets
// floors, count scales and unseen-token costs be compared offline.
struct CandidateScore {
  std::string language;
  double seen_score = 0;
  std::uint64_t unseen_tokens = 0;
};

// What the classifier thought of one file, before any floor applies.
struct ScoreTrace {
  std::string mode;      // "content" or "filename"
  std::string expected;  // the labelled language
  std::string fallback;  // the first name candidate; empty when there is none
  std::uint64_t tokens = 0;
  std::vector<CandidateScore> candidates;  // every known candidate, or every language
};

// Traces one identification: the name candidates the engine gathers for
// `file_name` (empty: content only), then each candidate's split score.
ScoreTrace trace_scores(const Lingomat& engine, const std::string& mode,
                        const std::string& expected, const std::string& file_name,
                        const std::string& text);

// One tab-separated line per trace (mode, expected, fallback, tokens, then
// LANGUAGE=SEEN_SCORE/UNSEEN_TOKENS per candidate), under a header line.
std::string format_score_traces(const std::vector<ScoreTrace>& traces);

}  // namespace quillon::lingomat::tools
