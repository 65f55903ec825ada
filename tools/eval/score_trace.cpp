#include "eval/score_trace.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace quillon::lingomat::tools {

namespace {

// No tokenizer emits a control character followed by this text, so every
// language scores it with the unseen-token term.
const std::vector<std::string> kNeverSeen = {"\x01never-seen"};

}  // namespace

ScoreTrace trace_scores(const Lingomat& engine, const std::string& mode,
                        const std::string& expected, const std::string& file_name,
                        const std::string& text) {
  // The candidates and the token count are the engine's own record of this identification.
  const Lingomat::Trace decision = engine.trace(file_name, text);
  const std::vector<std::string>& candidates = decision.candidates;

  ScoreTrace trace;
  trace.mode = mode;
  trace.expected = expected;
  trace.fallback = candidates.empty() ? std::string() : candidates.front();
  trace.tokens = decision.token_count;
  // Splitting each score into its seen and unseen parts needs the tokens themselves.
  const std::vector<std::string> tokens = engine.tokenizer().extract_tokens(text);
  std::map<std::string, std::uint64_t> multiplicity;
  for (const std::string& token : tokens) ++multiplicity[token];

  const Classifier& classifier = engine.classifier();
  std::vector<std::string> known = classifier.languages();
  std::vector<std::string> names = candidates.empty() ? known : candidates;
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  std::vector<std::string> one(1);
  for (const std::string& name : names) {
    if (!std::binary_search(known.begin(), known.end(), name)) continue;
    const double unseen_term = classifier.tokens_probability(kNeverSeen, name);
    CandidateScore score{name, classifier.language_probability(name), 0};
    for (const auto& [token, count] : multiplicity) {
      one[0] = token;
      const double term = classifier.tokens_probability(one, name);
      if (term == unseen_term) {
        score.unseen_tokens += count;
      } else {
        score.seen_score += double(count) * term;
      }
    }
    trace.candidates.push_back(std::move(score));
  }
  return trace;
}

std::string format_score_traces(const std::vector<ScoreTrace>& traces) {
  std::string out = "mode\texpected\tfallback\ttokens\tcandidates\n";
  char score[64];
  for (const ScoreTrace& trace : traces) {
    out += trace.mode + '\t' + trace.expected + '\t' + trace.fallback + '\t' +
           std::to_string(trace.tokens);
    for (const CandidateScore& candidate : trace.candidates) {
      std::snprintf(score, sizeof score, "%.4f", candidate.seen_score);
      out +=
          '\t' + candidate.language + '=' + score + '/' + std::to_string(candidate.unseen_tokens);
    }
    out += '\n';
  }
  return out;
}

}  // namespace quillon::lingomat::tools
