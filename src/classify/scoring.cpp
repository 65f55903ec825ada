#include <algorithm>
#include <cmath>

#include "classify/classifier.h"
#include "classify/text_tokens.h"

namespace quillon::lingomat {
namespace {

double as_double(std::uint64_t count) { return static_cast<double>(count); }

// Dense rows kept per call at most: enough for every distinct token of an ordinary text; a
// hostile text with more distinct tokens builds its extra rows on the fly instead.
constexpr std::size_t kMaxCachedTerms = std::size_t{1} << 17;

}  // namespace

double Classifier::prior(const Language& language) const {
  return std::log(as_double(language.samples) / as_double(languages_total_));
}

std::vector<double> Classifier::log_likelihoods(const TextTokens& tokens,
                                                const std::vector<std::uint32_t>& languages) const {
  const std::size_t width = languages.size();
  std::vector<double> sums(width, 0.0);
  if (tokens.positions().empty() || width == 0) return sums;

  // Column of each scored language; -1 for the others.
  std::vector<std::int32_t> column(by_index_.size(), -1);
  for (std::size_t i = 0; i < width; ++i) column[languages[i]] = static_cast<std::int32_t>(i);

  // Unseen tokens cost the same for every language, so they never change the order.
  const double unseen = std::log(1.0 / as_double(tokens_total_));
  auto fill_row = [&](double* row, std::uint32_t id) {
    std::fill(row, row + width, unseen);
    for (std::uint32_t p = posting_starts_[id]; p != posting_starts_[id + 1]; ++p) {
      const std::int32_t at = column[posting_languages_[p]];
      if (at >= 0) row[at] = posting_terms_[p];
    }
  };

  // One row of terms per distinct token; row 0 serves every token the data never saw.
  constexpr std::uint32_t kOnTheFly = UINT32_MAX;
  const std::vector<std::uint32_t>& ids = tokens.vocabulary_ids();
  std::vector<std::uint32_t> row_of(ids.size(), 0);
  std::vector<double> rows(width, unseen);
  for (std::size_t d = 0; d < ids.size(); ++d) {
    if (ids[d] == Vocabulary::kAbsent) continue;
    if (rows.size() + width > kMaxCachedTerms) {
      row_of[d] = kOnTheFly;
      continue;
    }
    row_of[d] = static_cast<std::uint32_t>(rows.size() / width);
    rows.resize(rows.size() + width);
    fill_row(rows.data() + rows.size() - width, ids[d]);
  }

  // Terms are added per language in text order, exactly as one lookup per position would.
  std::vector<double> scratch(width);
  double* const sum = sums.data();
  for (const std::uint32_t d : tokens.positions()) {
    const double* row;
    if (row_of[d] == kOnTheFly) {
      fill_row(scratch.data(), ids[d]);
      row = scratch.data();
    } else {
      row = rows.data() + std::size_t{row_of[d]} * width;
    }
    for (std::size_t i = 0; i < width; ++i) sum[i] += row[i];
  }
  return sums;
}

double Classifier::tokens_probability(const std::vector<std::string>& tokens,
                                      const std::string& language) const {
  const Language& lang = languages_.at(language);
  if (tokens.empty()) return 0.0;
  TextTokens text(vocabulary_);
  for (const std::string& token : tokens) text.add_view(token);
  return log_likelihoods(text, {lang.index}).front();
}

double Classifier::language_probability(const std::string& language) const {
  return prior(languages_.at(language));
}

Ranking Classifier::classify(const std::vector<std::string>& tokens,
                             const std::vector<std::string>& languages) const {
  if (min_tokens_ != 0 && tokens.size() < min_tokens_) return Ranking();
  TextTokens text(vocabulary_);
  for (const std::string& token : tokens) text.add_view(token);
  return classify(text, &languages);
}

Ranking Classifier::classify(const TextTokens& tokens,
                             const std::vector<std::string>* languages) const {
  Ranking ranking;
  if (min_tokens_ != 0 && tokens.count() < min_tokens_) return ranking;

  // The candidates in order, duplicates kept, and each distinct language scored once.
  std::vector<const LanguageEntry*> candidates;
  if (languages == nullptr) {
    for (const LanguageEntry& entry : languages_) candidates.push_back(&entry);
  } else {
    candidates.reserve(languages->size());
    for (const std::string& name : *languages) {
      const auto found = languages_.find(name);
      if (found != languages_.end()) candidates.push_back(&*found);
    }
  }
  std::vector<std::int32_t> column(by_index_.size(), -1);
  std::vector<std::uint32_t> scored;
  for (const LanguageEntry* entry : candidates) {
    if (column[entry->second.index] >= 0) continue;
    column[entry->second.index] = static_cast<std::int32_t>(scored.size());
    scored.push_back(entry->second.index);
  }
  const std::vector<double> sums = log_likelihoods(tokens, scored);

  ranking.reserve(candidates.size());
  for (const LanguageEntry* entry : candidates) {
    ranking.emplace_back(entry->first, sums[column[entry->second.index]] + prior(entry->second));
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
