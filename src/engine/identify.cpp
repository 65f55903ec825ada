#include <algorithm>

#include "classify/text_tokens.h"
#include "engine/engine.h"

namespace quillon::lingomat {
namespace {

void append(std::vector<std::string>& list, std::vector<std::string>&& more) {
  list.insert(list.end(), std::make_move_iterator(more.begin()),
              std::make_move_iterator(more.end()));
}

}  // namespace

bool Lingomat::apply_restrictions() const { return !opts_.restrictions.empty(); }

std::vector<std::string> Lingomat::default_restrictions() const {
  return apply_restrictions() ? opts_.restrictions : classifier_.languages();
}

Ranking Lingomat::identify_by_classifier(std::string_view code,
                                         const std::vector<std::string>& candidates) const {
  TextTokens tokens(classifier_.vocabulary());
  tokenizer_.extract_tokens(code, tokens);
  // No candidates and no restrictions: every language, without copying their names first.
  const std::vector<std::string>* names = &candidates;
  if (candidates.empty()) names = apply_restrictions() ? &opts_.restrictions : nullptr;
  Ranking ranking = classifier_.classify(tokens, names);

  const double floor = opts_.classifier.min_score_per_token;
  if (floor != 0.0) {  // -0.0 compares equal too, and also switches the floor off
    const double count = static_cast<double>(tokens.count());
    // A NaN score per token compares false and is kept.
    ranking.erase(std::remove_if(ranking.begin(), ranking.end(),
                                 [&](const auto& entry) { return floor > entry.second / count; }),
                  ranking.end());
  }
  return ranking;
}

std::string Lingomat::identify(std::string_view file_name, std::string_view code) const {
  std::vector<std::string> candidates = identify_by_filename(file_name);
  append(candidates, identify_by_shebang(code));
  append(candidates, identify_by_extension(file_name));

  if (apply_restrictions()) {
    const auto& allowed = opts_.restrictions;
    candidates.erase(std::remove_if(candidates.begin(), candidates.end(),
                                    [&](const std::string& name) {
                                      return !std::binary_search(allowed.begin(), allowed.end(),
                                                                 name);
                                    }),
                     candidates.end());
  }

  // One candidate, however often listed, is the answer whatever the classifier says.
  if (!candidates.empty() &&
      std::all_of(candidates.begin(), candidates.end(),
                  [&](const std::string& name) { return name == candidates.front(); })) {
    return candidates.front();
  }
  const Ranking ranking = identify_by_classifier(code, candidates);
  if (!ranking.empty()) return ranking.front().first;
  // The classifier is silent: file name beats interpreter, interpreter beats extension.
  if (!candidates.empty()) return candidates.front();
  return std::string();
}

}  // namespace quillon::lingomat
