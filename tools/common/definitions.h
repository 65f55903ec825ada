#pragma once

#include <string>
#include <vector>

namespace quillon::lingomat::tools {

// One [Language] section of a definitions file.
struct LanguageDefinition {
  std::string name;
  int line = 0;  // line of the section header, for messages
  // Values in the order written, each kept once.
  std::vector<std::string> extensions;
  std::vector<std::string> filenames;
  std::vector<std::string> interpreters;
};

// The languages of a definitions file, in file order (that order is kept in
// the data file, where it decides which of several candidates is the fallback).
class LanguageDefinitions {
 public:
  LanguageDefinitions() = default;
  explicit LanguageDefinitions(std::vector<LanguageDefinition> languages)
      : languages_(std::move(languages)) {}

  const std::vector<LanguageDefinition>& languages() const { return languages_; }
  const LanguageDefinition* find(const std::string& name) const;

 private:
  std::vector<LanguageDefinition> languages_;
};

// Parses definitions text; `source` names it in messages ("source:line: what").
// Throws ToolError on the first malformed line.
LanguageDefinitions parse_definitions(const std::string& text, const std::string& source);

// Reads and parses a definitions file; an unreadable file is a ToolError too.
LanguageDefinitions read_definitions_file(const std::string& path);

}  // namespace quillon::lingomat::tools
