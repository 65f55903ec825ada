#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>

namespace quillon::lingomat::cli {

// Trees smaller than this finish before a progress line would help.
inline constexpr std::size_t kProgressMinFiles = 200;

// A self-overwriting "done/total" line on a terminal. Callers clear it before
// writing anything else to the same terminal.
class ProgressLine {
 public:
  // Shows nothing unless `stream` is a terminal and the run is large.
  ProgressLine(std::FILE* stream, std::size_t total);
  ~ProgressLine();

  void update(std::size_t done);
  void clear();

 private:
  std::FILE* stream_;
  std::size_t total_;
  bool enabled_;
  bool shown_ = false;
  bool drawn_before_ = false;
  std::chrono::steady_clock::time_point last_drawn_;
};

}  // namespace quillon::lingomat::cli
