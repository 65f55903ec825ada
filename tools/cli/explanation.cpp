#include "explanation.h"

#include <algorithm>

namespace quillon::lingomat::cli {

namespace {

// The name-based candidates as identify() gathers them: file name, then
// interpreter, then extension, keeping only the languages --only allows.
// (The engine offers no call that filters a candidate list, so this one asks
// it which languages are allowed.)
std::vector<std::string> allowed_candidates(const Lingomat& engine, const Evidence& evidence) {
  std::vector<std::string> all = evidence.by_filename;
  all.insert(all.end(), evidence.by_interpreter.begin(), evidence.by_interpreter.end());
  all.insert(all.end(), evidence.by_extension.begin(), evidence.by_extension.end());
  if (!engine.apply_restrictions()) return all;
  const std::vector<std::string> allowed = engine.default_restrictions();  // sorted by the engine
  std::vector<std::string> kept;
  for (const std::string& language : all) {
    if (std::binary_search(allowed.begin(), allowed.end(), language)) kept.push_back(language);
  }
  return kept;
}

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

}  // namespace

Evidence explain_identification(const Lingomat& engine, const std::string& name,
                                const std::string& code, const std::string& answer) {
  Evidence evidence;
  evidence.name = name;
  evidence.by_filename = engine.identify_by_filename(name);
  evidence.interpreter = engine.tokenizer().extract_shebang(code);
  evidence.by_interpreter = engine.identify_by_shebang(code);
  if (const auto dot = name.rfind('.'); dot != std::string::npos) {
    evidence.extension = name.substr(dot);
  }
  evidence.by_extension = engine.identify_by_extension(name);
  evidence.candidates = allowed_candidates(engine, evidence);

  const std::vector<std::string> tokens = engine.tokenizer().extract_tokens(code);
  evidence.token_count = tokens.size();
  evidence.min_tokens = engine.opts().classifier.min_tokens;
  evidence.min_score_per_token = engine.opts().classifier.min_score_per_token;
  // What identify() sees: the ranking after the engine's floor.
  const Ranking kept = engine.identify_by_classifier(code, evidence.candidates);
  // And the same ranking before it, so that languages below the floor can be shown.
  const std::vector<std::string> languages =
      evidence.candidates.empty() ? engine.default_restrictions() : evidence.candidates;
  evidence.ranking =
      top_languages(engine.classifier().classify(tokens, languages), kept, tokens.size());

  if (answer.empty()) {
    evidence.decision = "none";
  } else if (!kept.empty() && kept.front().first == answer) {
    evidence.decision = "classifier";
  } else {
    evidence.decision = "first candidate";
  }
  return evidence;
}

}  // namespace quillon::lingomat::cli
