#include "tokenize/string_scanner.h"
#include "tokenize/token_patterns.h"
#include "tokenize/tokenizer.h"

namespace quillon::lingomat {
namespace {

using namespace token_patterns;

std::string after_last_slash(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::string Tokenizer::extract_shebang(const std::string& text) const {
  StringScanner scanner(text);
  if (scanner.scan(kShebangMark).empty()) return std::string();
  const std::string path = scanner.scan(kNonBlankRun);
  if (path.empty()) return std::string();

  std::string name = after_last_slash(path);
  if (name == "env") {
    scanner.scan(kBlanks);
    scanner.scan(kEnvAssignments);  // NAME=value settings before the program
    name = after_last_slash(scanner.scan(kNonBlankRun));
  }
  // Version suffixes go: python3 and python2.7 are both python.
  const auto digit = name.find_first_of("0123456789");
  if (digit != std::string::npos) name.erase(digit);
  return name;
}

std::vector<std::string> Tokenizer::extract_sgml_tokens(const std::string& text) const {
  std::vector<std::string> tokens;
  StringScanner scanner(text);
  while (!scanner.eos()) {
    const std::string opener = scanner.scan(kTagOpener);
    if (!opener.empty()) {
      tokens.push_back(opener + ">");
      continue;
    }
    const std::string attribute = scanner.scan(kAttributeWithValue);
    if (!attribute.empty()) {
      tokens.push_back(attribute);
      // The value itself is never a token.
      const std::string quote = scanner.peek(1, 0);
      if (quote == "\"") {
        scanner.scan(quote);
        scanner.skip_until(kDoubleQuotedValueEnd);
      } else if (quote == "'") {
        scanner.scan(quote);
        scanner.skip_until(kSingleQuotedValueEnd);
      } else {
        scanner.skip_until(kBareWord);
      }
      continue;
    }
    const std::string word = scanner.scan(kBareWord);
    if (!word.empty()) {
      tokens.push_back(word);
      continue;
    }
    if (!scanner.scan(kTagEnd).empty()) break;
    scanner.advance();
  }
  return tokens;
}

}  // namespace quillon::lingomat
