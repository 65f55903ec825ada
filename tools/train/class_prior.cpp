#include "train/class_prior.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "common/tool_error.h"

namespace quillon::lingomat::tools {

namespace {

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  const auto last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

}  // namespace

LanguageShares parse_language_shares(const std::string& text, const std::string& origin) {
  LanguageShares shares;
  std::istringstream lines(text);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    line = trimmed(line);
    if (line.empty() || line[0] == '#') continue;  // not after a share: C# holds one
    const std::string where = origin + ":" + std::to_string(number) + ": ";
    const auto gap = line.find_first_of(" \t");
    if (gap == std::string::npos) throw ToolError(where + "expected 'SHARE LANGUAGE'");
    const std::string number_text = line.substr(0, gap);
    const std::string language = trimmed(line.substr(gap));
    std::size_t used = 0;
    double share = 0;
    try {
      share = std::stod(number_text, &used);
    } catch (const std::exception&) {
      used = 0;
    }
    // At most 100% keeps round(share * 100) far inside the data file's integers.
    if (used != number_text.size() || !(share > 0 && share <= 100)) {
      throw ToolError(where + "the share '" + number_text +
                      "' is not a number above 0 and at most 100");
    }
    if (!shares.emplace(language, share).second) {
      throw ToolError(where + language + " is listed twice");
    }
  }
  if (shares.empty()) throw ToolError(origin + ": no language shares");
  return shares;
}

void weight_priors_by_shares(const std::vector<LanguageDefinition>& languages,
                             std::vector<LanguageStatistics>& statistics,
                             const LanguageShares& shares) {
  double smallest = shares.begin()->second;
  for (const auto& entry : shares) {
    const std::string& name = entry.first;
    const bool defined = std::any_of(languages.begin(), languages.end(),
                                     [&](const LanguageDefinition& l) { return l.name == name; });
    if (!defined) throw ToolError("the language shares name '" + name + "', which is not defined");
    smallest = std::min(smallest, entry.second);
  }
  for (std::size_t i = 0; i < languages.size() && i < statistics.size(); ++i) {
    if (statistics[i].samples == 0) continue;
    const auto found = shares.find(languages[i].name);
    const double share = found == shares.end() ? smallest : found->second;
    statistics[i].samples = std::max<std::uint64_t>(1, std::llround(share * 100));
  }
}

}  // namespace quillon::lingomat::tools
