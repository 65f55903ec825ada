#include "classify/classifier.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/data_file_keys.h"
#include "classify/text_scorer.h"
#include "json/json_reader.h"

namespace quillon::lingomat {
namespace {

constexpr std::uint32_t kNoLanguage = UINT32_MAX;

// Counts are stored as 32-bit JSON integers and widened with sign extension on purpose:
// a negative count wraps instead of being rejected.
std::uint64_t widen(int value) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

std::uint64_t read_count(const DataFileCount& count) {
  if (!count.is_int) throw JsonException(kUnexpectedType);
  return widen(count.value);
}

// The object member `member` of the root, as the document's typed access would find it.
void require_object(const DataFileMember& member) {
  if (member.shape == DataFileMember::Shape::kMissing) throw JsonException(kMissingKey);
  if (member.shape != DataFileMember::Shape::kObject) throw JsonException(kUnexpectedType);
}

// The integer member `member` of the root.
std::uint64_t require_int(const DataFileMember& member) {
  if (member.shape == DataFileMember::Shape::kMissing) throw JsonException(kMissingKey);
  return read_count(member.count);
}

}  // namespace

Classifier::Classifier(const Opts& opts)
    : data_file_(opts.data_file), min_tokens_(opts.min_tokens), max_results_(opts.max_results) {
  DataFileSections sections = read_data_file_sections(opts.data_file);
  load(sections);
}

Classifier::Classifier(const Opts& opts, DataFileSections& sections)
    : data_file_(opts.data_file), min_tokens_(opts.min_tokens), max_results_(opts.max_results) {
  load(sections);
}

// The checks run in the order of a walk over "languages": the first language whose data is
// faulty decides the error, whatever faults lie elsewhere. Then two passes over the token
// counts of the languages kept: the first counts each token's languages, the second fills
// the postings in place.
void Classifier::load(DataFileSections& sections) {
  if (!sections.root_is_object) throw JsonException(kNotAnObject);
  require_object(sections.language_tokens_member);
  require_object(sections.tokens_member);
  require_object(sections.languages_member);

  std::vector<const DataFileTokenCounts*> token_objects;  // per language index
  for (const auto& [name, samples_count] : sections.languages) {
    const std::uint64_t samples = read_count(samples_count);
    const auto token_total = sections.language_tokens.find(name);
    if (token_total == sections.language_tokens.end()) throw JsonException(kMissingKey);
    const std::uint64_t tokens = read_count(token_total->second);
    const auto counts = sections.token_counts.find(name);
    if (counts == sections.token_counts.end()) throw JsonException(kMissingKey);
    if (!counts->second.is_object) throw JsonException(kUnexpectedType);

    const auto [entry, inserted] = languages_.try_emplace(name);
    // A repeated language reads the same first "tokens" member again: nothing new to store.
    if (inserted) {
      if (!counts->second.all_counts_int) throw JsonException(kUnexpectedType);
      entry->second.index = static_cast<std::uint32_t>(by_index_.size());
      by_index_.push_back(&*entry);
      token_objects.push_back(&counts->second);
    }
    entry->second.tokens = tokens;
    entry->second.samples = samples;
  }
  tokens_total_ = require_int(sections.tokens_total);
  languages_total_ = require_int(sections.languages_total);

  vocabulary_ = std::move(sections.vocabulary);
  vocabulary_.shrink_to_fit();
  const std::vector<std::uint32_t>& ids = sections.token_ids;
  const std::vector<int>& counts = sections.token_counts_in_order;

  // Tokens per language become start offsets; one more entry marks the end. A token
  // repeated in one object is one posting.
  std::vector<std::uint32_t> last_language(vocabulary_.size(), kNoLanguage);
  posting_starts_.assign(vocabulary_.size() + 1, 0);
  for (std::uint32_t index = 0; index < token_objects.size(); ++index) {
    for (std::size_t member = token_objects[index]->first; member < token_objects[index]->end;
         ++member) {
      const std::uint32_t id = ids[member];
      if (last_language[id] == index) continue;
      last_language[id] = index;
      ++posting_starts_[id];
    }
  }
  std::uint32_t total = 0;
  for (std::uint32_t& start : posting_starts_) total += std::exchange(start, total);
  posting_languages_.resize(total);
  posting_terms_.resize(total);

  std::vector<std::uint32_t> next(posting_starts_.begin(), posting_starts_.end() - 1);
  std::fill(last_language.begin(), last_language.end(), kNoLanguage);
  for (std::uint32_t index = 0; index < token_objects.size(); ++index) {
    const double language_tokens_total = static_cast<double>(by_index_[index]->second.tokens);
    for (std::size_t member = token_objects[index]->first; member < token_objects[index]->end;
         ++member) {
      const std::uint32_t id = ids[member];
      const double term =
          std::log(static_cast<double>(widen(counts[member])) / language_tokens_total);
      if (last_language[id] == index) {
        posting_terms_[next[id] - 1] = term;  // the last count of a repeated token wins
        continue;
      }
      last_language[id] = index;
      posting_languages_[next[id]] = index;
      posting_terms_[next[id]] = term;
      ++next[id];
    }
  }
}

std::vector<std::string> Classifier::languages() const {
  std::vector<std::string> names;
  names.reserve(languages_.size());
  for (const auto& entry : languages_) names.push_back(entry.first);
  return names;
}

const char* Classifier::language_resident_c_str(const std::string& name) const {
  const auto found = languages_.find(name);
  return found == languages_.end() ? nullptr : found->first.c_str();
}

// Scoring and ranking.
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
