#include "explanation.h"

#include <algorithm>

namespace quillon::lingomat::cli {

namespace {

bool ranked_in(const Ranking& ranking, const std::string& language) {
  return std::any_of(ranking.begin(), ranking.end(),
                     [&](const auto& entry) { return entry.first == language; });
}

// The best languages of the unfiltered ranking, each marked by whether the
// engine's own floor (as applied by identify_by_classifier) kept it.
std::vector<RankedLanguage> top_languages(const Ranking& ranking, const Ranking& kept,
                                          std::size_t token_count) {
  std::vector<RankedLanguage> top;
  for (const auto& ranked : ranking) {
    // Named, not structured bindings: a lambda below uses the name, which clang 14 refuses.
    const std::string& language = ranked.first;
    const double score = ranked.second;
    if (top.size() == kExplainedLanguages) break;
    // A language named by two strategies is ranked twice with the same score.
    const bool seen = std::any_of(top.begin(), top.end(), [&](const RankedLanguage& entry) {
      return entry.language == language;
    });
    if (seen) continue;
    RankedLanguage entry;
    entry.language = language;
    entry.score = score;
    entry.score_per_token = score / static_cast<double>(token_count);
    entry.above_floor = ranked_in(kept, language);
    top.push_back(std::move(entry));
  }
  return top;
}

const char* decision_of(const Lingomat::Trace& trace) {
  if (trace.answer.empty()) return "none";
  switch (trace.reason) {
    case Lingomat::Trace::Reason::kClassifier:
      return "classifier";
    case Lingomat::Trace::Reason::kOnlyCandidate:
      // The classifier, limited to that one language, may still have confirmed it.
      return trace.kept.empty() ? "first candidate" : "classifier";
    case Lingomat::Trace::Reason::kFirstCandidate:
    case Lingomat::Trace::Reason::kNone:
      break;
  }
  return "first candidate";
}

}  // namespace

Evidence explain_identification(const Lingomat::Trace& trace, const std::string& name) {
  Evidence evidence;
  evidence.name = name;
  evidence.by_filename = trace.by_filename;
  evidence.interpreter = trace.interpreter;
  evidence.by_interpreter = trace.by_interpreter;
  evidence.extension = trace.extension;
  evidence.by_extension = trace.by_extension;
  evidence.candidates = trace.candidates;
  evidence.token_count = trace.token_count;
  evidence.min_tokens = trace.floors.min_tokens;
  evidence.min_score_per_token = trace.floors.min_score_per_token;
  evidence.ranking = top_languages(trace.ranking, trace.kept, trace.token_count);
  evidence.decision = decision_of(trace);
  return evidence;
}

}  // namespace quillon::lingomat::cli
