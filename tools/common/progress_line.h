#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

#include "common/parallel.h"

namespace quillon::lingomat::tools {

// Trees smaller than this finish before a progress line would help.
inline constexpr std::size_t kProgressMinFiles = 200;

// A self-overwriting "<label>: done/total files (percent)" line on a terminal. Callers
// clear it before writing anything else to the same terminal.
class ProgressLine {
 public:
  // Shows nothing unless `stream` is a terminal and the run is large.
  ProgressLine(std::FILE* stream, std::string label, std::size_t total);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();

  void update(std::size_t done);
  void clear();

 private:
  std::FILE* stream_;
  std::string label_;
  std::size_t total_;
  bool enabled_;
  bool shown_ = false;
  bool drawn_before_ = false;
  std::chrono::steady_clock::time_point last_drawn_;
};

// A ProgressLine on standard error fed by run_parallel, cleared when the run ends; an
// empty function when standard error is not a terminal.
ProgressFn terminal_progress(const std::string& label);

}  // namespace quillon::lingomat::tools
