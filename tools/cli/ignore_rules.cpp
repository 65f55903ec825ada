#include "ignore_rules.h"

#include "ignore_glob.h"

namespace quillon::lingomat::cli {

namespace {

// Trailing spaces are dropped, unless escaped with a backslash.
void trim_trailing_spaces(std::string& line) {
  std::size_t keep = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\\') {
      ++i;
      keep = i + 1;
    } else if (line[i] != ' ') {
      keep = i + 1;
    }
  }
  line.resize(std::min(keep, line.size()));
}

}  // namespace

IgnoreRules::IgnoreRules(std::string_view text, std::string base) : base_(std::move(base)) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);  // a UTF-8 byte-order mark
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string line(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    add_line(std::move(line));
  }
}

void IgnoreRules::add_line(std::string line) {
  if (line.empty() || line[0] == '#') return;
  trim_trailing_spaces(line);
  Pattern pattern;
  std::string_view glob = line;
  if (!glob.empty() && glob[0] == '!') {
    pattern.negated = true;
    glob.remove_prefix(1);
  }
  if (!glob.empty() && glob.back() == '/') {
    pattern.directories_only = true;
    glob.remove_suffix(1);
  }
  if (glob.empty()) return;
  pattern.name_only = glob.find('/') == std::string_view::npos;
  if (glob[0] == '/') glob.remove_prefix(1);  // anchoring is implied by the other '/'
  pattern.glob = std::string(glob);
  patterns_.push_back(std::move(pattern));
}

std::optional<bool> IgnoreRules::verdict(std::string_view path, bool is_directory) const {
  // Only paths below the file's own folder are its business.
  if (!base_.empty()) {
    if (path.size() <= base_.size() || path[base_.size()] != '/' ||
        path.substr(0, base_.size()) != base_) {
      return std::nullopt;
    }
    path.remove_prefix(base_.size() + 1);
  }
  const std::size_t slash = path.rfind('/');
  const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
  for (auto it = patterns_.rbegin(); it != patterns_.rend(); ++it) {
    if (it->directories_only && !is_directory) continue;
    const bool match =
        it->name_only ? glob_matches_name(it->glob, name) : glob_matches_path(it->glob, path);
    if (match) return !it->negated;
  }
  return std::nullopt;
}

}  // namespace quillon::lingomat::cli
