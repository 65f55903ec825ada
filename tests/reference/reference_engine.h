#pragma once

// The identification pipeline written the plain way: ordered maps for the statistics and the
// lookups, one map lookup per token and language, a fresh std::regex scanner per pass, the data
// file parsed once per consumer. Slow on purpose; it is the yardstick for the real engine.

#include <cstdint>
#include <map>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "base/option_defaults.h"

namespace quillon::lingomat::reference {

using Ranking = std::vector<std::pair<std::string, double>>;

// A cursor over a text moved by std::regex patterns, each compiled once per scanner.
class Scanner {
 public:
  explicit Scanner(const std::string& text) : text_(text) {}
  std::uint64_t pos() const { return pos_; }
  bool eos() const { return pos_ == text_.size(); }
  bool line_begin() const { return pos_ == 0 || text_[pos_ - 1] == '\n'; }
  std::string peek(std::uint64_t count, std::int64_t offset) const;
  void advance() { ++pos_; }
  void set_pos(std::uint64_t pos) { pos_ = pos; }
  std::string scan(const std::string& pattern);
  std::uint64_t skip_until(const std::string& pattern);
  static std::string escape(const std::string& text);

 private:
  const std::regex& compiled(const std::string& pattern);

  std::map<std::string, std::regex> cache_;
  const std::string& text_;
  std::uint64_t pos_ = 0;
};

struct TokenizerOpts {
  std::uint64_t max_bytes = defaults::kMaxBytes;
  std::uint64_t max_tokens = defaults::kMaxTokens;
};

std::vector<std::string> extract_tokens(const std::string& text, const TokenizerOpts& opts);
std::string extract_shebang(const std::string& text);
std::vector<std::string> extract_sgml_tokens(const std::string& text);

class Classifier {
 public:
  Classifier(const std::string& data_file, std::uint64_t min_tokens);
  std::vector<std::string> languages() const;
  Ranking classify(const std::vector<std::string>& tokens,
                   const std::vector<std::string>& languages) const;

 private:
  struct Language {
    std::uint64_t tokens = 0;
    std::uint64_t samples = 0;
    std::map<std::string, std::uint64_t> token_counts;
  };
  std::uint64_t min_tokens_;
  std::map<std::string, Language> languages_;
  std::uint64_t tokens_total_ = 0;
  std::uint64_t languages_total_ = 0;
};

struct EngineOpts {
  TokenizerOpts tokenizer;
  std::string data_file;
  std::uint64_t min_tokens = defaults::kMinTokens;
  double min_score_per_token = defaults::kMinScorePerToken;
  std::vector<std::string> restrictions;
};

class Engine {
 public:
  explicit Engine(const EngineOpts& opts);
  std::string identify(const std::string& file_name, const std::string& code) const;
  Ranking identify_by_classifier(const std::string& code,
                                 const std::vector<std::string>& candidates) const;
  const Classifier& classifier() const { return classifier_; }

 private:
  using Lookup = std::map<std::string, std::vector<std::string>>;
  EngineOpts opts_;
  Classifier classifier_;
  Lookup filenames_;
  Lookup extnames_;
  Lookup interpreters_;
};

}  // namespace quillon::lingomat::reference
