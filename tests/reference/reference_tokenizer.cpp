#include <regex>

#include "reference_engine.h"

namespace quillon::lingomat::reference {
namespace {

// A cursor over a text moved by std::regex patterns, each compiled once per scanner.
class Scanner {
 public:
  explicit Scanner(const std::string& text) : text_(text) {}
  std::uint64_t pos() const { return pos_; }
  bool eos() const { return pos_ == text_.size(); }
  bool line_begin() const { return pos_ == 0 || text_[pos_ - 1] == '\n'; }
  std::string peek(std::uint64_t count, std::int64_t offset) const {
    return text_.substr(pos_ + static_cast<std::uint64_t>(offset), count);
  }
  void advance() { ++pos_; }
  void set_pos(std::uint64_t pos) { pos_ = pos; }

  std::string scan(const std::string& pattern) {
    const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(pos_);
    std::smatch match;
    if (!std::regex_search(begin, text_.end(), match, compiled(pattern),
                           std::regex_constants::match_continuous) ||
        match[0].first != begin) {
      return std::string();
    }
    pos_ += static_cast<std::uint64_t>(match.length(0));
    return match.str(0);
  }

  std::uint64_t skip_until(const std::string& pattern) {
    std::smatch match;
    if (!std::regex_search(text_.begin() + static_cast<std::ptrdiff_t>(pos_), text_.end(), match,
                           compiled(pattern))) {
      return 0;
    }
    const std::uint64_t old_pos = pos_;
    pos_ = static_cast<std::uint64_t>(match[0].second - text_.begin());
    return pos_ - old_pos;
  }

 private:
  const std::regex& compiled(const std::string& pattern) {
    const auto [found, fresh] = cache_.try_emplace(pattern);
    if (fresh) found->second.assign(pattern, std::regex_constants::optimize);
    return found->second;
  }

  std::map<std::string, std::regex> cache_;
  const std::string& text_;
  std::uint64_t pos_ = 0;
};

// Block comments: the alternation of their starts, and each start's end, as patterns.
const char* const kCommentStarts = "/\\*|<!--|\\{-|\\(\\*|\"\"\"|'''";
const std::map<std::string, std::string> kCommentEnds = {{"/*", "\\*/"},       {"<!--", "-->"},
                                                         {"{-", "-\\}"},       {"(*", "\\*\\)"},
                                                         {"\"\"\"", "\"\"\""}, {"'''", "'''"}};

// What follows the last '/', or the whole path (npos + 1 is 0).
std::string after_last_slash(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::vector<std::string> extract_sgml_tokens(const std::string& text) {
  std::vector<std::string> tokens;
  Scanner scanner(text);
  while (!scanner.eos()) {
    const std::string opener = scanner.scan("<\\/?[^\\s>]+");
    if (!opener.empty()) {
      tokens.push_back(opener + ">");
      continue;
    }
    const std::string attribute = scanner.scan("\\w+=");
    if (!attribute.empty()) {
      tokens.push_back(attribute);
      const std::string quote = scanner.peek(1, 0);
      if (quote == "\"") {
        scanner.scan(quote);
        scanner.skip_until("[^\\\\]\"");
      } else if (quote == "'") {
        scanner.scan(quote);
        scanner.skip_until("[^\\\\]'");
      } else {
        scanner.skip_until("\\w+");
      }
      continue;
    }
    const std::string word = scanner.scan("\\w+");
    if (!word.empty()) {
      tokens.push_back(word);
      continue;
    }
    if (!scanner.scan(">").empty()) break;
    scanner.advance();
  }
  return tokens;
}

}  // namespace

std::string extract_shebang(const std::string& text) {
  Scanner scanner(text);
  if (scanner.scan("#![ \t]*").empty()) return std::string();
  const std::string path = scanner.scan("\\S+");
  if (path.empty()) return std::string();
  std::string name = after_last_slash(path);
  if (name == "env") {
    scanner.scan("[ \t]+");
    scanner.scan("[^\r\n]*=\\S+[ \t]+");
    name = after_last_slash(scanner.scan("\\S+"));
  }
  const auto digit = name.find_first_of("0123456789");
  if (digit != std::string::npos) name.erase(digit);
  return name;
}

std::vector<std::string> extract_tokens(const std::string& text, const TokenizerOpts& opts) {
  std::vector<std::string> tokens;
  Scanner scanner(text);
  while (!scanner.eos() && !(opts.max_bytes != 0 && scanner.pos() >= opts.max_bytes) &&
         !(opts.max_tokens != 0 && tokens.size() >= opts.max_tokens)) {
    if (scanner.line_begin()) {
      const std::string line = scanner.scan("#![^\r\n]+");
      if (!line.empty()) {
        const std::string interpreter = extract_shebang(line);
        if (!interpreter.empty()) tokens.push_back("SHEBANG#!" + interpreter);
        continue;
      }
      if (!scanner.scan("\\s*(?:#|//|--|%|\") ").empty()) {
        scanner.skip_until("\n|$");
        continue;
      }
    }
    const std::string comment = scanner.scan(kCommentStarts);
    if (!comment.empty()) {
      scanner.skip_until(kCommentEnds.at(comment));
      continue;
    }
    const std::string next = scanner.peek(1, 0);
    if (next == "\"" || next == "'") {
      scanner.advance();
      const std::uint64_t start = scanner.pos();
      for (;;) {
        if (scanner.skip_until(next) == 0) {
          scanner.set_pos(start);
          break;
        }
        if (scanner.peek(1, -2) != "\\") break;
      }
      continue;
    }
    if (!scanner
             .scan("(0x[0-9a-fA-F][0-9a-fA-F.]*|\\d[0-9.]*)([uU][lL]{0,2}|([eE][-+]\\d*)?[fFlL]*)")
             .empty()) {
      continue;
    }
    const std::string tag = scanner.scan("<[^\\s<>][^<>]*>");
    if (!tag.empty()) {
      for (const std::string& token : extract_sgml_tokens(tag)) tokens.push_back(token);
      continue;
    }
    std::string token = scanner.scan("[;{}()[\\]]");
    if (token.empty()) token = scanner.scan("[\\w\\.@#\\/\\*]+");
    if (token.empty()) token = scanner.scan("[\\x80-\\xFF]+");
    if (token.empty()) token = scanner.scan("[-+*/%]|<<?|&&?|\\|\\|?");
    if (token.empty()) scanner.advance();
    if (!token.empty()) tokens.push_back(token);
  }
  return tokens;
}

}  // namespace quillon::lingomat::reference
