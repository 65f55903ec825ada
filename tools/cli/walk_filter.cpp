#include "walk_filter.h"

#include <fnmatch.h>

#include <fstream>

namespace quillon::lingomat::cli {

namespace {

std::string base_name(const std::string& relative) {
  const auto slash = relative.rfind('/');
  return slash == std::string::npos ? relative : relative.substr(slash + 1);
}

bool glob_matches(const std::string& pattern, const std::string& text, int flags) {
  return ::fnmatch(pattern.c_str(), text.c_str(), flags) == 0;
}

}  // namespace

WalkFilter::WalkFilter(std::vector<std::string> excludes, bool honour_ignore_files)
    : excludes_(std::move(excludes)), honour_ignore_files_(honour_ignore_files) {}

void WalkFilter::enter_directory(const std::filesystem::path& directory,
                                 const std::string& relative) {
  if (!honour_ignore_files_) return;
  add_rules(directory / ".gitignore", relative);
  add_rules(directory / ".ignore", relative);
}

void WalkFilter::add_rules(const std::filesystem::path& file, const std::string& base) {
  std::ifstream in(file);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    // Trailing blanks are not part of a pattern unless escaped.
    while (!line.empty() && line.back() == ' ' &&
           (line.size() < 2 || line[line.size() - 2] != '\\')) {
      line.pop_back();
    }
    if (line.empty() || line[0] == '#') continue;
    Rule rule;
    rule.base = base;
    if (line[0] == '!') {
      rule.negated = true;
      line.erase(0, 1);
    } else if (line[0] == '\\') {
      line.erase(0, 1);  // "\#name", "\!name"
    }
    if (!line.empty() && line.back() == '/') {
      rule.directories_only = true;
      line.pop_back();
    }
    if (line.rfind("**/", 0) == 0 && line.find('/', 3) == std::string::npos) line.erase(0, 3);
    rule.anchored = line.find('/') != std::string::npos;
    if (!line.empty() && line[0] == '/') line.erase(0, 1);
    if (line.empty()) continue;
    rule.pattern = line;
    rules_.push_back(std::move(rule));
  }
}

bool WalkFilter::ignored(const std::string& relative, bool is_directory) const {
  bool result = false;
  for (const Rule& rule : rules_) {
    if (rule.directories_only && !is_directory) continue;
    if (!rule.base.empty() && relative.rfind(rule.base + '/', 0) != 0) continue;
    const std::string below = rule.base.empty() ? relative : relative.substr(rule.base.size() + 1);
    bool matches = false;
    if (rule.anchored) {
      // "**" may cross folders; otherwise a "*" stays within one.
      const bool across = rule.pattern.find("**") != std::string::npos;
      matches = glob_matches(rule.pattern, below, across ? 0 : FNM_PATHNAME);
    } else {
      matches = glob_matches(rule.pattern, base_name(below), 0);
    }
    if (matches) result = !rule.negated;
  }
  return result;
}

bool WalkFilter::skipped(const std::string& relative, bool is_directory) const {
  for (const std::string& glob : excludes_) {
    if (glob_matches(glob, base_name(relative), 0) || glob_matches(glob, relative, FNM_PATHNAME)) {
      return true;
    }
  }
  return honour_ignore_files_ && ignored(relative, is_directory);
}

}  // namespace quillon::lingomat::cli
