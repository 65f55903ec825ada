#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quillon::lingomat {

using Ranking = std::vector<std::pair<std::string, double>>;

// Naive Bayes language classifier over the token statistics of a data file.
// Immutable after construction, so concurrent queries need no locking.
class Classifier {
 public:
  struct Opts {
    std::string data_file;
    std::uint64_t min_tokens = 40;
    std::uint64_t max_results = 0;
    double min_score_per_token = -8.0;  // read by the engine, not by the classifier
  };

  struct ClassifierLang {
    std::uint64_t tokens = 0;
    std::uint64_t samples = 0;
    std::map<std::string, std::uint64_t, std::less<>> token_counts;  // looked up by view too
  };

  explicit Classifier(const Opts& opts);

  std::vector<std::string> languages() const;
  // Points into the classifier's own copy of the name; valid as long as the classifier.
  const char* language_resident_c_str(const std::string& name) const;

  double tokens_probability(const std::vector<std::string>& tokens,
                            const std::string& language) const;
  double language_probability(const std::string& language) const;
  Ranking classify(const std::vector<std::string>& tokens,
                   const std::vector<std::string>& languages) const;

 private:
  std::string data_file_;
  std::uint64_t min_tokens_;
  std::uint64_t max_results_;
  std::map<std::string, ClassifierLang> languages_;
  std::uint64_t tokens_total_ = 0;
  std::uint64_t languages_total_ = 0;
};

}  // namespace quillon::lingomat
