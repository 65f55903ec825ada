#include "common/parallel.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace quillon::lingomat::tools {

namespace {

// The first (lowest-index) failure of a parallel run.
class FirstFailure {
 public:
  void record(std::size_t index, std::exception_ptr error) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!error_ || index < index_) {
      index_ = index;
      error_ = std::move(error);
    }
    failed_ = true;
  }
  bool failed() const { return failed_; }
  void rethrow() const {
    if (error_) std::rethrow_exception(error_);
  }

 private:
  std::mutex mutex_;
  std::size_t index_ = 0;
  std::exception_ptr error_;
  std::atomic<bool> failed_{false};
};

}  // namespace

unsigned default_thread_count() {
  const unsigned cores = std::thread::hardware_concurrency();
  return cores == 0 ? 1 : cores;
}

void run_parallel(std::size_t count, unsigned threads,
                  const std::function<void(std::size_t, unsigned)>& task,
                  const ProgressFn& progress) {
  std::atomic<std::size_t> next{0};
  std::atomic<std::size_t> done{0};
  FirstFailure failure;
  std::mutex mutex;
  std::condition_variable finished;
  unsigned running = threads == 0 ? 1 : threads;

  const auto work = [&](unsigned worker) {
    while (!failure.failed()) {
      const std::size_t index = next.fetch_add(1);
      if (index >= count) break;
      try {
        task(index, worker);
      } catch (...) {
        failure.record(index, std::current_exception());
      }
      done.fetch_add(1);
    }
    std::lock_guard<std::mutex> lock(mutex);
    --running;
    finished.notify_all();
  };

  std::vector<std::thread> pool;
  const unsigned workers = running;
  for (unsigned worker = 0; worker < workers; ++worker) pool.emplace_back(work, worker);
  {
    std::unique_lock<std::mutex> lock(mutex);
    while (running > 0) {
      finished.wait_for(lock, std::chrono::milliseconds(200));
      if (progress && running > 0) progress(done.load(), count, false);
    }
  }
  for (std::thread& thread : pool) thread.join();
  if (progress) progress(done.load(), count, true);
  failure.rethrow();
}

ProgressFn terminal_progress(const std::string& label) {
  if (!isatty(STDERR_FILENO)) return {};
  return [label](std::size_t done, std::size_t total, bool last) {
    std::fprintf(stderr, "\r%s: %zu/%zu files", label.c_str(), done, total);
    if (last) std::fputc('\n', stderr);
    std::fflush(stderr);
  };
}

}  // namespace quillon::lingomat::tools
