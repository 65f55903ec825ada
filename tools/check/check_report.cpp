#include "check/check_report.h"

#include <algorithm>

namespace quillon::lingomat::tools {

std::size_t CheckReport::count(Severity severity) const {
  return static_cast<std::size_t>(
      std::count_if(problems.begin(), problems.end(),
                    [severity](const Problem& problem) { return problem.severity == severity; }));
}

LineIndex::LineIndex(const std::string& text) {
  line_starts_.push_back(0);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n') line_starts_.push_back(i + 1);
  }
}

std::size_t LineIndex::line(std::size_t offset) const {
  return static_cast<std::size_t>(
      std::upper_bound(line_starts_.begin(), line_starts_.end(), offset) - line_starts_.begin());
}

std::size_t LineIndex::column(std::size_t offset) const {
  return offset - line_starts_[line(offset) - 1] + 1;
}

std::string format_problem(const std::string& path, const LineIndex& lines,
                           const Problem& problem) {
  return path + ":" + std::to_string(lines.line(problem.offset)) + ":" +
         std::to_string(lines.column(problem.offset)) + ": " +
         (problem.severity == Severity::kError ? "error: " : "warning: ") + problem.message;
}

}  // namespace quillon::lingomat::tools
