#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace quillon::lingomat {

// Turns source text into the language-neutral token list the classifier scores.
class Tokenizer {
 public:
  struct Opts {
    std::uint64_t max_bytes = 10240;  // tokens start only below this offset; 0: no limit
    std::uint64_t max_tokens = 500;   // no step starts once this many tokens exist; 0: no limit
  };

  explicit Tokenizer(const Opts& opts);

  std::vector<std::string> extract_tokens(const std::string& text) const;
  // The interpreter named on a leading "#!" line, without directories or version digits.
  std::string extract_shebang(const std::string& text) const;
  // The tag-name and attribute-name tokens of one SGML-like tag.
  std::vector<std::string> extract_sgml_tokens(const std::string& text) const;

  const Opts& opts() const { return opts_; }

 private:
  Opts opts_;
  std::map<std::string, std::string> multiline_comments_;
  std::string multiline_comment_pattern_;
};

}  // namespace quillon::lingomat
