#pragma once

#include <cstddef>
#include <functional>

namespace quillon::lingomat::tools {

// Called on the calling thread about five times a second, and once more with
// `last` set when the run ends (also when it fails).
using ProgressFn = std::function<void(std::size_t done, std::size_t total, bool last)>;

// The number of threads to use when the user did not say: every core.
unsigned default_thread_count();

// Runs task(index, worker) for every index below `count` on up to `threads`
// threads (worker is 0 to threads-1, for per-thread accumulators). Indices are
// claimed in increasing order; once a task throws, no new index is claimed,
// and the exception of the lowest failing index is rethrown, so which error
// is reported does not depend on scheduling. When the system cannot start as
// many threads as asked, the ones started do the work (the calling thread if
// none). If `progress` throws, no new index is claimed, the running tasks are
// waited for, and its exception is rethrown.
void run_parallel(std::size_t count, unsigned threads,
                  const std::function<void(std::size_t index, unsigned worker)>& task,
                  const ProgressFn& progress = {});

}  // namespace quillon::lingomat::tools
