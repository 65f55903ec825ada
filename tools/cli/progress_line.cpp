#include "progress_line.h"

#include <unistd.h>

namespace quillon::lingomat::cli {

namespace {

// Redrawing faster than the eye can follow only costs terminal bandwidth.
constexpr std::chrono::milliseconds kRedrawInterval(100);

}  // namespace

ProgressLine::ProgressLine(std::FILE* stream, std::size_t total)
    : stream_(stream),
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
  std::fprintf(stream_, "\rlingomat: %zu/%zu files (%zu%%)", done, total_,
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

}  // namespace quillon::lingomat::cli
