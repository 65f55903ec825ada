#include <algorithm>
#include <cmath>

#include "classify/classifier.h"
#include "classify/text_scorer.h"

namespace quillon::lingomat {

double Classifier::prior(const Language& language) const {
  return std::log(static_cast<double>(language.samples) / static_cast<double>(languages_total_));
}

double Classifier::tokens_probability(const std::vector<std::string>& tokens,
                                      const std::string& language) const {
  languages_.at(language);  // an unknown language is an error, not a score
  if (tokens.empty()) return 0.0;
  const std::vector<std::string> only{language};
  TextScorer scorer(*this, &only);
  for (const std::string& token : tokens) scorer.add_view(token);
  return scorer.sums().front();
}

double Classifier::language_probability(const std::string& language) const {
  return prior(languages_.at(language));
}

Ranking Classifier::classify(const std::vector<std::string>& tokens,
                             const std::vector<std::string>& languages) const {
  if (min_tokens_ != 0 && tokens.size() < min_tokens_) return Ranking();
  TextScorer scorer(*this, &languages);
  for (const std::string& token : tokens) scorer.add_view(token);
  return classify(scorer);
}

Ranking Classifier::classify(TextScorer& scorer) const {
  Ranking ranking;
  if (min_tokens_ != 0 && scorer.count() < min_tokens_) return ranking;
  if (scorer.candidates_.empty()) return ranking;
  const std::vector<double>& sums = scorer.sums();

  // Sorted as (score, candidate) pairs, so that names are copied once, into place. Best
  // first; NaN scores (from zero counts in the data) go last, which keeps the comparison a
  // strict weak ordering; a stable sort keeps ties in candidate order.
  std::vector<std::pair<double, const LanguageEntry*>> scores;
  scores.reserve(scorer.candidates_.size());
  for (const LanguageEntry* entry : scorer.candidates_) {
    scores.emplace_back(sums[scorer.column_[entry->second.index]] + prior(entry->second), entry);
  }
  std::stable_sort(scores.begin(), scores.end(), [](const auto& a, const auto& b) {
    return a.first > b.first || (std::isnan(b.first) && !std::isnan(a.first));
  });
  if (max_results_ != 0 && max_results_ < scores.size()) scores.resize(max_results_);
  ranking.reserve(scores.size());
  for (const auto& [score, entry] : scores) ranking.emplace_back(entry->first, score);
  return ranking;
}

}  // namespace quillon::lingomat
