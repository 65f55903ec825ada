#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/option_defaults.h"
#include "tokenize/token_sink.h"

namespace quillon::lingomat {

// Turns source text into the language-neutral token list the classifier scores.
class Tokenizer {
 public:
  struct Opts {
    std::uint64_t max_bytes =
        defaults::kMaxBytes;  // tokens start only below this offset; 0: no limit
    std::uint64_t max_tokens =
        defaults::kMaxTokens;  // no step starts once this many tokens exist; 0: no limit
  };

  explicit Tokenizer(const Opts& opts) : opts_(opts) {}

  std::vector<std::string> extract_tokens(std::string_view text) const;
  // The same tokens, handed over one by one; most are views into `text`.
  void extract_tokens(std::string_view text, TokenSink& sink) const;
  // The same, and one past the last byte of `text` it looked at (text.size() + 1 when it
  // looked for the end): any text that starts with the same bytes up to there gives the same
  // tokens, so a caller may hand over just a prefix of a longer text.
  std::size_t extract_tokens_and_reach(std::string_view text, TokenSink& sink) const;
  // The interpreter named on a leading "#!" line, without directories or version digits.
  std::string extract_shebang(std::string_view text) const;
  // The same, as a view into `text`: a "#!" line may be as long as the text.
  std::string_view shebang_view(std::string_view text) const;
  // The tag-name and attribute-name tokens of one SGML-like tag.
  std::vector<std::string> extract_sgml_tokens(std::string_view text) const;
  void extract_sgml_tokens(std::string_view text, TokenSink& sink) const;

  const Opts& opts() const { return opts_; }

 private:
  Opts opts_;
};

// Collects tokens as strings, for callers that want the whole list.
class TokenList : public TokenSink {
 public:
  std::vector<std::string> tokens;

 protected:
  void take_view(std::string_view token) override { tokens.emplace_back(token); }
  void take_copy(std::string_view token) override { tokens.emplace_back(token); }
};

}  // namespace quillon::lingomat
