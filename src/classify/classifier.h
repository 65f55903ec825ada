#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "base/option_defaults.h"
#include "classify/vocabulary.h"
#include "json/data_file_sections.h"

namespace quillon::lingomat {

class TextScorer;

using Ranking = std::vector<std::pair<std::string, double>>;

// Naive Bayes language classifier over the token statistics of a data file.
// Immutable after construction, so concurrent queries need no locking.
class Classifier {
 public:
  struct Opts {
    std::string data_file;
    std::uint64_t min_tokens = defaults::kMinTokens;
    std::uint64_t max_results = 0;
    // Read by the engine, not by the classifier.
    double min_score_per_token = defaults::kMinScorePerToken;
  };

  // Reads the statistics from opts.data_file.
  explicit Classifier(const Opts& opts);
  // Takes the statistics from the sections already read from opts.data_file; their
  // vocabulary moves into the classifier.
  Classifier(const Opts& opts, DataFileSections& sections);

  std::vector<std::string> languages() const;
  // Points into the classifier's own copy of the name; valid as long as the classifier.
  const char* language_resident_c_str(const std::string& name) const;

  double tokens_probability(const std::vector<std::string>& tokens,
                            const std::string& language) const;
  double language_probability(const std::string& language) const;
  Ranking classify(const std::vector<std::string>& tokens,
                   const std::vector<std::string>& languages) const;

  // The same ranking for the tokens a scorer made for this classifier took.
  Ranking classify(TextScorer& scorer) const;
  const Vocabulary& vocabulary() const { return vocabulary_; }

 private:
  friend class TextScorer;

  struct Language {
    std::uint64_t tokens = 0;
    std::uint64_t samples = 0;
    std::uint32_t index = 0;  // dense number, for the per-language accumulators
  };
  using LanguageEntry = std::pair<const std::string, Language>;

  void load(DataFileSections& sections);
  double prior(const Language& language) const;

  std::string data_file_;
  std::uint64_t min_tokens_;
  std::uint64_t max_results_;
  std::map<std::string, Language> languages_;  // byte order, and names that never move
  std::vector<const LanguageEntry*> by_index_;
  std::uint64_t tokens_total_ = 0;
  std::uint64_t languages_total_ = 0;

  // Token id -> the languages that saw it and their ln(count / tokens), computed once here
  // with the very operations scoring used to repeat, so every score keeps its bits.
  Vocabulary vocabulary_;
  std::vector<std::uint32_t> posting_starts_;  // token id -> first posting; one extra at the end
  std::vector<std::uint32_t> posting_languages_;
  std::vector<double> posting_terms_;
};

}  // namespace quillon::lingomat
