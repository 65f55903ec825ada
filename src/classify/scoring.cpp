#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

#include "classify/classifier.h"

namespace quillon::lingomat {
namespace {

double as_double(std::uint64_t count) { return static_cast<double>(count); }

// A token list as its distinct tokens plus, per position, which one stands there. Texts
// repeat most tokens, so each language looks up every distinct token once, and the terms
// are still added in text order, giving exactly the sum of one lookup per position.
struct TokenIndex {
  std::vector<std::string_view> distinct;
  std::vector<std::size_t> position_to_distinct;

  explicit TokenIndex(const std::vector<std::string>& tokens) {
    std::unordered_map<std::string_view, std::size_t> seen;
    position_to_distinct.reserve(tokens.size());
    for (const std::string& token : tokens) {
      const auto inserted = seen.emplace(token, distinct.size());
      if (inserted.second) distinct.push_back(token);
      position_to_distinct.push_back(inserted.first->second);
    }
  }
};

double log_likelihood(const TokenIndex& index, const Classifier::ClassifierLang& lang,
                      std::uint64_t tokens_total) {
  if (index.position_to_distinct.empty()) return 0.0;
  // Unseen tokens cost the same for every language, so they never change the order.
  const double unseen = std::log(1.0 / as_double(tokens_total));
  std::vector<double> terms;
  terms.reserve(index.distinct.size());
  for (const std::string_view token : index.distinct) {
    const auto found = lang.token_counts.find(token);
    terms.push_back(found == lang.token_counts.end()
                        ? unseen
                        : std::log(as_double(found->second) / as_double(lang.tokens)));
  }
  double sum = 0.0;
  for (const std::size_t distinct : index.position_to_distinct) sum += terms[distinct];
  return sum;
}

}  // namespace

double Classifier::tokens_probability(const std::vector<std::string>& tokens,
                                      const std::string& language) const {
  const ClassifierLang& lang = languages_.at(language);
  return log_likelihood(TokenIndex(tokens), lang, tokens_total_);
}

double Classifier::language_probability(const std::string& language) const {
  return std::log(as_double(languages_.at(language).samples) / as_double(languages_total_));
}

Ranking Classifier::classify(const std::vector<std::string>& tokens,
                             const std::vector<std::string>& languages) const {
  Ranking ranking;
  if (min_tokens_ != 0 && tokens.size() < min_tokens_) return ranking;
  const TokenIndex index(tokens);
  for (const std::string& name : languages) {
    const auto found = languages_.find(name);
    if (found == languages_.end()) continue;
    ranking.emplace_back(
        name, log_likelihood(index, found->second, tokens_total_) + language_probability(name));
  }
  // Best first. NaN scores (from zero counts in the data) go last, which keeps the comparison
  // a strict weak ordering; a stable sort keeps ties in candidate order.
  std::stable_sort(ranking.begin(), ranking.end(), [](const auto& a, const auto& b) {
    return a.second > b.second || (std::isnan(b.second) && !std::isnan(a.second));
  });
  if (max_results_ != 0 && max_results_ < ranking.size()) ranking.resize(max_results_);
  return ranking;
}

}  // namespace quillon::lingomat
