#include "common/progress_line.h"

#include <unistd.h>

#include <memory>

namespace quillon::lingomat::tools {

namespace {

// Redrawing faster than the eye can follow only costs terminal bandwidth.
constexpr std::chrono::milliseconds kRedrawInterval(100);

}  // namespace

ProgressLine::ProgressLine(std::FILE* stream, std::string label, std::size_t total)
    : stream_(stream),
      label_(std::move(label)),
      total_(total),
      enabled_(total >= kProgressMinFiles && ::isatty(::fileno(stream)) == 1) {}

ProgressLine::~ProgressLine() { clear(); }

void ProgressLine::update(std::size_t done) {
  if (!enabled_) return;
  const auto now = std::chrono::steady_clock::now();
  // Throttled even after clear(): output arriving in bursts must not make it flicker.
  if (drawn_before_ && now - last_drawn_ < kRedrawInterval) return;
  drawn_before_ = true;
  last_drawn_ = now;
  std::fprintf(stream_, "\r%s: %zu/%zu files (%zu%%)", label_.c_str(), done, total_,
               total_ == 0 ? 100 : done * 100 / total_);
  std::fflush(stream_);
  shown_ = true;
}

void ProgressLine::clear() {
  if (!shown_) return;
  // Erase to the end of the line, then return to its start.
  std::fputs("\r\x1b[K", stream_);
  std::fflush(stream_);
  shown_ = false;
}

ProgressFn terminal_progress(const std::string& label) {
  if (::isatty(STDERR_FILENO) != 1) return {};
  // run_parallel copies the function; the copies draw one line, made once the total is known.
  auto line = std::make_shared<std::unique_ptr<ProgressLine>>();
  return [label, line](std::size_t done, std::size_t total, bool last) {
    if (!*line) *line = std::make_unique<ProgressLine>(stderr, label, total);
    if (last) {
      (*line)->clear();
    } else {
      (*line)->update(done);
    }
  };
}

}  // namespace quillon::lingomat::tools
