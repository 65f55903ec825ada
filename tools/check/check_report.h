#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quillon::lingomat::tools {

// An error makes the engine refuse the file or compute nonsense from it; a warning
// marks data the engine accepts but never uses.
enum class Severity { kError, kWarning };

struct Problem {
  Severity severity = Severity::kError;
  std::size_t offset = 0;  // byte offset in the file the problem points at
  std::string message;
};

struct CheckReport {
  std::vector<Problem> problems;  // in the order they were found

  void error(std::size_t offset, std::string message) {
    problems.push_back({Severity::kError, offset, std::move(message)});
  }
  void warning(std::size_t offset, std::string message) {
    problems.push_back({Severity::kWarning, offset, std::move(message)});
  }
  std::size_t count(Severity severity) const;
};

// Turns byte offsets into 1-based line and column numbers (columns count bytes).
class LineIndex {
 public:
  explicit LineIndex(const std::string& text);
  std::size_t line(std::size_t offset) const;
  std::size_t column(std::size_t offset) const;

 private:
  std::vector<std::size_t> line_starts_;
};

// "PATH:LINE:COLUMN: error: MESSAGE", the form editors and terminals link to the spot.
std::string format_problem(const std::string& path, const LineIndex& lines, const Problem& problem);

}  // namespace quillon::lingomat::tools
