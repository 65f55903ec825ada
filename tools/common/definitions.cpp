#include "common/definitions.h"

#include <algorithm>
#include <map>
#include <sstream>

#include "common/file_io.h"
#include "common/tool_error.h"
#include "common/utf8.h"

namespace quillon::lingomat::tools {

namespace {

constexpr const char* kBlanks = " \t\r\f\v";

std::string trim(const std::string& text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return "";
  const auto last = text.find_last_not_of(kBlanks);
  return text.substr(first, last - first + 1);
}

std::vector<std::string> split_words(const std::string& text) {
  std::vector<std::string> words;
  std::istringstream stream(text);
  std::string word;
  while (stream >> word) words.push_back(word);
  return words;
}

class DefinitionsParser {
 public:
  explicit DefinitionsParser(const std::string& source) : source_(source) {}

  void parse_line(const std::string& raw, int line_number) {
    line_ = line_number;
    const std::string line = trim(raw);
    if (line.empty() || line[0] == '#') return;
    if (!is_valid_utf8(line)) fail("not valid UTF-8");
    if (line[0] == '[') {
      start_section(line);
    } else {
      add_values(line);
    }
  }

  LanguageDefinitions finish() {
    if (languages_.empty()) {
      throw ToolError(source_ + ": defines no language (expected a '[Language]' section)");
    }
    return LanguageDefinitions(std::move(languages_));
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw ToolError(source_ + ":" + std::to_string(line_) + ": " + what);
  }

  void start_section(const std::string& line) {
    if (line.back() != ']') fail("section header '" + line + "' lacks its closing ']'");
    const std::string name = trim(line.substr(1, line.size() - 2));
    if (name.empty()) fail("empty language name in '" + line + "'");
    if (name.find('/') != std::string::npos) {
      fail("language name '" + name + "' contains '/', which no samples folder can be named");
    }
    const auto known = first_line_.find(name);
    if (known != first_line_.end()) {
      fail("language '" + name + "' is already defined on line " + std::to_string(known->second));
    }
    first_line_[name] = line_;
    languages_.push_back(LanguageDefinition{name, line_, {}, {}, {}});
  }

  void add_values(const std::string& line) {
    const auto equals = line.find('=');
    if (equals == std::string::npos) {
      fail("expected '[Language]', 'key = values' or a '#' comment, got '" + line + "'");
    }
    const std::string key = trim(line.substr(0, equals));
    if (languages_.empty()) fail("'" + key + "' comes before any '[Language]' section");
    LanguageDefinition& language = languages_.back();
    std::vector<std::string>* values = nullptr;
    if (key == "extensions") {
      values = &language.extensions;
    } else if (key == "filenames") {
      values = &language.filenames;
    } else if (key == "interpreters") {
      values = &language.interpreters;
    } else {
      fail("unknown key '" + key + "' (expected extensions, filenames or interpreters)");
    }
    for (const std::string& value : split_words(line.substr(equals + 1))) {
      // The engine looks extensions up from the last dot on, so anything else never matches.
      if (values == &language.extensions &&
          (value.size() < 2 || value[0] != '.' || value.find('.', 1) != std::string::npos)) {
        fail("extension '" + value + "' must be one dot followed by the extension, like '.py'");
      }
      if (std::find(values->begin(), values->end(), value) == values->end()) {
        values->push_back(value);
      }
    }
  }

  std::string source_;
  int line_ = 0;
  std::vector<LanguageDefinition> languages_;
  std::map<std::string, int> first_line_;
};

}  // namespace

const LanguageDefinition* LanguageDefinitions::find(const std::string& name) const {
  for (const LanguageDefinition& language : languages_) {
    if (language.name == name) return &language;
  }
  return nullptr;
}

LanguageDefinitions parse_definitions(const std::string& text, const std::string& source) {
  DefinitionsParser parser(source);
  std::istringstream stream(text);
  std::string line;
  int line_number = 0;
  while (std::getline(stream, line)) parser.parse_line(line, ++line_number);
  return parser.finish();
}

LanguageDefinitions read_definitions_file(const std::string& path) {
  return parse_definitions(read_file(path, "definitions file"), path);
}

}  // namespace quillon::lingomat::tools
