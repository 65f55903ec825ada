#include "classify/classifier.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/data_file_keys.h"
#include "classify/text_scorer.h"
#include "json/json_member_index.h"

namespace quillon::lingomat {
namespace {

constexpr std::uint32_t kNoLanguage = UINT32_MAX;

// Counts are stored as 32-bit JSON integers and widened with sign extension on purpose:
// a negative count wraps instead of being rejected.
std::uint64_t widen(int value) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

std::uint64_t read_count(const JsonValue& value) {
  if (!value.IsInt()) throw JsonException(kUnexpectedType);
  return widen(value.GetInt());
}

std::string_view string_view_of(const JsonValue& value) {
  if (!value.IsString()) throw JsonException(kNotAString);
  return std::string_view(value.GetString(), value.GetStringLength());
}

}  // namespace

Classifier::Classifier(const Opts& opts) : Classifier(opts, parse_json_file(opts.data_file)) {}

Classifier::Classifier(const Opts& opts, const JsonValue& document)
    : data_file_(opts.data_file), min_tokens_(opts.min_tokens), max_results_(opts.max_results) {
  load(document);
}

// Two passes over the token objects: the first checks every value in file order and interns
// the tokens, counting each token's languages; the second fills the postings in place.
void Classifier::load(const JsonValue& document) {
  const auto language_tokens = json_get<JsonConstObject>(document, data_keys::kLanguageTokens);
  const auto tokens = json_get<JsonConstObject>(document, data_keys::kTokens);
  const auto languages = json_get<JsonConstObject>(document, data_keys::kLanguages);
  const JsonMemberIndex language_tokens_index(language_tokens);
  const JsonMemberIndex tokens_index(tokens);

  // Room for every token up front: the tables are built once, without growing.
  std::size_t members = 0;
  std::size_t bytes = 0;
  for (const auto& language : tokens) {
    if (!language.value.IsObject()) continue;
    members += language.value.MemberCount();
    for (const auto& token : language.value.GetObject()) {
      if (token.name.IsString()) bytes += token.name.GetStringLength();
    }
  }
  vocabulary_.reserve(members, bytes);

  std::vector<const JsonValue*> token_objects;  // per language index
  std::vector<std::uint32_t> member_ids;        // token id of every member, in file order
  std::vector<std::uint32_t> last_language;     // per token id, the language that saw it last
  member_ids.reserve(members);
  last_language.reserve(members);
  posting_starts_.reserve(members + 1);
  for (const auto& member : languages) {
    const std::string name(string_view_of(member.name));
    const std::uint64_t samples = read_count(member.value);
    const std::uint64_t token_total = read_count(language_tokens_index.at(name));
    const JsonValue& token_object = tokens_index.at(name);
    if (!token_object.IsObject()) throw JsonException(kUnexpectedType);

    const auto [entry, inserted] = languages_.try_emplace(name);
    // A repeated language reads the same first "tokens" member again: nothing new to store.
    if (inserted) {
      const auto index = static_cast<std::uint32_t>(by_index_.size());
      entry->second.index = index;
      by_index_.push_back(&*entry);
      token_objects.push_back(&token_object);
      // Hashes run a few members ahead, so that their table slots are loaded in time.
      constexpr std::size_t kAhead = 8;
      const auto object = token_object.GetObject();
      const auto first = object.MemberBegin();
      const std::size_t count = object.MemberCount();
      std::uint64_t hashes[kAhead] = {};
      auto hash_ahead = [&](std::size_t k) {
        if (!first[k].name.IsString()) return;  // reported when its turn comes
        hashes[k % kAhead] = vocabulary_.hash(string_view_of(first[k].name));
        vocabulary_.prefetch(hashes[k % kAhead]);
      };
      for (std::size_t k = 0; k < std::min(kAhead, count); ++k) hash_ahead(k);
      for (std::size_t i = 0; i < count; ++i) {
        const auto& token = first[i];
        const std::uint64_t hash = hashes[i % kAhead];
        if (i + kAhead < count) hash_ahead(i + kAhead);  // takes the slot just read
        const TokenHasher::Mode mode = vocabulary_.hasher().mode();
        const std::uint32_t id = vocabulary_.intern(string_view_of(token.name), hash);
        if (vocabulary_.hasher().mode() != mode) {
          // A flood made the table change its hash: the hashes read ahead are stale.
          for (std::size_t k = i + 1; k < std::min(i + 1 + kAhead, count); ++k) hash_ahead(k);
        }
        read_count(token.value);
        if (id == last_language.size()) {
          last_language.push_back(kNoLanguage);
          posting_starts_.push_back(0);
        }
        if (last_language[id] != index) {  // a token repeated in one object is one posting
          last_language[id] = index;
          ++posting_starts_[id];
        }
        member_ids.push_back(id);
      }
    }
    entry->second.tokens = token_total;
    entry->second.samples = samples;
  }
  tokens_total_ = widen(json_get<int>(document, data_keys::kTokensTotal));
  languages_total_ = widen(json_get<int>(document, data_keys::kLanguagesTotal));
  vocabulary_.shrink_to_fit();

  // Counts per token become start offsets; one more entry marks the end.
  std::uint32_t total = 0;
  for (std::uint32_t& start : posting_starts_) total += std::exchange(start, total);
  posting_starts_.push_back(total);
  posting_languages_.resize(total);
  posting_terms_.resize(total);

  std::vector<std::uint32_t> next(posting_starts_.begin(), posting_starts_.end() - 1);
  std::fill(last_language.begin(), last_language.end(), kNoLanguage);
  std::size_t member = 0;
  for (std::uint32_t index = 0; index < token_objects.size(); ++index) {
    const double language_tokens_total = static_cast<double>(by_index_[index]->second.tokens);
    for (const auto& token : token_objects[index]->GetObject()) {
      const std::uint32_t id = member_ids[member++];
      const double term =
          std::log(static_cast<double>(widen(token.value.GetInt())) / language_tokens_total);
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
