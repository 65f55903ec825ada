#include <algorithm>
#include <cmath>

#include "classify/classifier.h"

namespace quillon::lingomat {
namespace {

double as_double(std::uint64_t count) { return static_cast<double>(count); }

}  // namespace

double Classifier::tokens_probability(const std::vector<std::string>& tokens,
                                      const std::string& language) const {
  const ClassifierLang& lang = languages_.at(language);
  if (tokens.empty()) return 0.0;
  // Unseen tokens cost the same for every language, so they never change the order.
  const double unseen = std::log(1.0 / as_double(tokens_total_));
  double sum = 0.0;
  for (const std::string& token : tokens) {
    const auto found = lang.token_counts.find(token);
    sum += found == lang.token_counts.end()
               ? unseen
               : std::log(as_double(found->second) / as_double(lang.tokens));
  }
  return sum;
}

double Classifier::language_probability(const std::string& language) const {
  return std::log(as_double(languages_.at(language).samples) / as_double(languages_total_));
}

Ranking Classifier::classify(const std::vector<std::string>& tokens,
                             const std::vector<std::string>& languages) const {
  Ranking ranking;
  if (min_tokens_ != 0 && tokens.size() < min_tokens_) return ranking;
  for (const std::string& name : languages) {
    if (languages_.find(name) == languages_.end()) continue;
    ranking.emplace_back(name, tokens_probability(tokens, name) + language_probability(name));
  }
  // A stable sort keeps ties in candidate order and stays within bounds even for NaN scores.
  std::stable_sort(ranking.begin(), ranking.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  if (max_results_ != 0 && max_results_ < ranking.size()) ranking.resize(max_results_);
  return ranking;
}

}  // namespace quillon::lingomat
