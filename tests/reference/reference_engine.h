#pragma once

// The identification pipeline written the plain way: ordered maps for the statistics and the
// lookups, one map lookup per token and language, std::regex scanners compiled afresh for
// every text. Slow on purpose; it is the yardstick for the real engine.

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "base/option_defaults.h"

namespace quillon::lingomat::reference {

using Ranking = std::vector<std::pair<std::string, double>>;

struct TokenizerOpts {
  std::uint64_t max_bytes = defaults::kMaxBytes;
  std::uint64_t max_tokens = defaults::kMaxTokens;
};

std::vector<std::string> extract_tokens(const std::string& text, const TokenizerOpts& opts);
std::string extract_shebang(const std::string& text);

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
  // Every language with statistics, in byte order.
  std::vector<std::string> languages() const;
  Ranking classify(const std::vector<std::string>& tokens,
                   const std::vector<std::string>& languages) const;

 private:
  struct Language {
    std::uint64_t tokens = 0;
    std::uint64_t samples = 0;
    std::map<std::string, std::uint64_t> token_counts;
  };
  using Lookup = std::map<std::string, std::vector<std::string>>;
  EngineOpts opts_;
  std::map<std::string, Language> languages_;
  std::uint64_t tokens_total_ = 0;
  std::uint64_t languages_total_ = 0;
  Lookup filenames_;
  Lookup extnames_;
  Lookup interpreters_;
};

}  // namespace quillon::lingomat::reference
