#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include "classify/classifier.h"
#include "classify/term_sums.h"
#include "classify/text_tokens.h"

namespace quillon::lingomat {
namespace {

double as_double(std::uint64_t count) { return static_cast<double>(count); }

// Dense rows kept per call at most: enough for every distinct token of an ordinary text; a
// hostile text with more distinct tokens builds its extra rows on the fly instead.
constexpr std::size_t kMaxCachedTerms = std::size_t{1} << 17;

constexpr std::size_t kChunk = 1024;  // positions per pass of the sums

}  // namespace

double Classifier::prior(const Language& language) const {
  return std::log(as_double(language.samples) / as_double(languages_total_));
}

std::vector<double> Classifier::log_likelihoods(const TextTokens& tokens,
                                                const std::vector<std::uint32_t>& languages) const {
  const std::size_t width = languages.size();
  std::vector<double> sums(width, 0.0);
  if (tokens.positions().empty() || width == 0) return sums;
  const AddRows add_rows = fastest_add_rows();
  // Rows are padded to whole blocks of columns; the padding is summed and thrown away.
  const std::size_t stride = (width + kSumBlock - 1) / kSumBlock * kSumBlock;

  // Column of each scored language; -1 for the others.
  std::vector<std::int32_t> column(by_index_.size(), -1);
  for (std::size_t i = 0; i < width; ++i) column[languages[i]] = static_cast<std::int32_t>(i);

  // Unseen tokens cost the same for every language, so they never change the order.
  const double unseen = std::log(1.0 / as_double(tokens_total_));
  auto fill_row = [&](double* row, std::uint32_t id) {
    std::fill(row, row + stride, unseen);
    for (std::uint32_t p = posting_starts_[id]; p != posting_starts_[id + 1]; ++p) {
      const std::int32_t at = column[posting_languages_[p]];
      if (at >= 0) row[at] = posting_terms_[p];
    }
  };

  // One row of terms per distinct token the data knows, up to a budget; row 0 serves every
  // unseen token. Tokens beyond the budget get their rows built per chunk of positions, in
  // the last kChunk rows, which keeps memory bounded whatever the text.
  constexpr std::uint32_t kPerChunk = UINT32_MAX;
  const std::vector<std::uint32_t>& ids = tokens.vocabulary_ids();
  std::size_t known = 0;
  for (const std::uint32_t id : ids) known += id != Vocabulary::kAbsent;
  const std::size_t cached = std::min(known, kMaxCachedTerms / stride);
  const std::size_t chunk_rows = known == cached ? 0 : kChunk;
  // Left uninitialised: every row is filled before it is read.
  const std::unique_ptr<double[]> rows(new double[(1 + cached + chunk_rows) * stride]);
  std::fill(rows.get(), rows.get() + stride, unseen);
  std::vector<std::uint32_t> row_of(ids.size(), 0);
  std::uint32_t next_row = 1;
  for (std::size_t d = 0; d < ids.size(); ++d) {
    if (ids[d] == Vocabulary::kAbsent) continue;
    if (next_row > cached) {
      row_of[d] = kPerChunk;
      continue;
    }
    row_of[d] = next_row;
    fill_row(rows.get() + std::size_t{next_row} * stride, ids[d]);
    ++next_row;
  }

  // Terms are added per language in text order, exactly as one lookup per position would;
  // the lanes of a block are separate languages, so no addition is reordered. Each block of
  // columns runs through a chunk of the text in registers; the chunk's row offsets are
  // worked out once for all blocks.
  std::vector<double> padded(stride, 0.0);
  std::uint32_t offsets[kChunk];
  const std::vector<std::uint32_t>& positions = tokens.positions();
  for (std::size_t first = 0; first < positions.size(); first += kChunk) {
    const std::size_t count = std::min(kChunk, positions.size() - first);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t d = positions[first + i];
      std::size_t row = row_of[d];
      if (row == kPerChunk) {
        row = 1 + cached + i;
        fill_row(rows.get() + row * stride, ids[d]);
      }
      offsets[i] = static_cast<std::uint32_t>(row * stride);
    }
    for (std::size_t c = 0; c < stride; c += kSumBlock) {
      add_rows(rows.get() + c, offsets, count, padded.data() + c);
    }
  }
  std::copy(padded.begin(), padded.begin() + static_cast<std::ptrdiff_t>(width), sums.begin());
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

  // Sorted as (score, candidate) pairs, so that names are copied once, into place. Best
  // first; NaN scores (from zero counts in the data) go last, which keeps the comparison a
  // strict weak ordering; a stable sort keeps ties in candidate order.
  std::vector<std::pair<double, const LanguageEntry*>> scores;
  scores.reserve(candidates.size());
  for (const LanguageEntry* entry : candidates) {
    scores.emplace_back(sums[column[entry->second.index]] + prior(entry->second), entry);
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
