#include "eval/eval_report.h"

#include <algorithm>
#include <map>

namespace quillon::lingomat::tools {

double ModeReport::language_accuracy() const {
  if (languages.empty()) return 0.0;
  double sum = 0;
  for (const LanguageReport& language : languages) sum += language.accuracy();
  return sum / double(languages.size());
}

ModeReport build_mode_report(const std::string& mode, const std::string& description,
                             const std::vector<Identification>& identifications) {
  ModeReport report;
  report.mode = mode;
  report.description = description;
  std::map<std::string, LanguageReport> languages;
  std::map<std::pair<std::string, std::string>, std::uint64_t> confusions;

  for (const Identification& item : identifications) {
    LanguageReport& language = languages[item.expected];
    language.language = item.expected;
    ++language.files;
    ++report.files;
    report.bytes += item.bytes;
    report.seconds += item.seconds;
    if (item.answer.empty()) {
      ++language.no_answer;
      ++report.no_answer;
    } else if (item.answer == item.expected) {
      ++language.correct;
      ++report.correct;
    } else {
      ++language.wrong;
      ++report.wrong;
      ++confusions[{item.expected, item.answer}];
    }
  }

  for (const auto& [pair, count] : confusions) {
    report.confusions.push_back({pair.first, pair.second, count});
    // Confusions come in name order, so the first maximum is the first by name.
    LanguageReport& language = languages[pair.first];
    if (count > language.mistaken_for_count) {
      language.mistaken_for = pair.second;
      language.mistaken_for_count = count;
    }
  }
  std::stable_sort(report.confusions.begin(), report.confusions.end(),
                   [](const Confusion& a, const Confusion& b) { return a.count > b.count; });
  for (auto& entry : languages) report.languages.push_back(std::move(entry.second));
  return report;
}

}  // namespace quillon::lingomat::tools
