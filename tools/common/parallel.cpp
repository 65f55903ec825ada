#include "common/parallel.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace quillon::lingomat::tools {

namespace {

constexpr std::chrono::milliseconds kProgressInterval(200);

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

// Joins every started thread when the run ends, normally or by an exception,
// after telling the workers to claim nothing more: a joinable std::thread
// destroyed during unwinding would end the process.
class JoinAll {
 public:
  JoinAll(std::vector<std::thread>& pool, std::atomic<bool>& stop) : pool_(pool), stop_(stop) {}
  ~JoinAll() {
    stop_ = true;
    for (std::thread& thread : pool_) {
      if (thread.joinable()) thread.join();
    }
  }
  JoinAll(const JoinAll&) = delete;
  JoinAll& operator=(const JoinAll&) = delete;

 private:
  std::vector<std::thread>& pool_;
  std::atomic<bool>& stop_;
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
  std::atomic<bool> stop{false};
  FirstFailure failure;
  std::mutex mutex;
  std::condition_variable finished;
  unsigned running = 0;  // threads started and not yet finished

  const auto work = [&](unsigned worker) {
    while (!failure.failed() && !stop) {
      const std::size_t index = next.fetch_add(1);
      if (index >= count) break;
      try {
        task(index, worker);
      } catch (...) {
        failure.record(index, std::current_exception());
      }
      done.fetch_add(1);
    }
  };
  const auto thread_body = [&](unsigned worker) {
    work(worker);
    std::lock_guard<std::mutex> lock(mutex);
    --running;
    finished.notify_all();
  };

  // More threads than tasks would only idle.
  const unsigned wanted = static_cast<unsigned>(
      std::min<std::size_t>(std::max(threads, 1u), std::max(count, std::size_t{1})));
  std::vector<std::thread> pool;
  pool.reserve(wanted);
  JoinAll join_all(pool, stop);
  for (unsigned worker = 0; worker < wanted; ++worker) {
    {
      std::lock_guard<std::mutex> lock(mutex);
      ++running;
    }
    try {
      pool.emplace_back(thread_body, worker);
    } catch (const std::system_error&) {
      // The system has no more threads to give; the ones started share the work.
      std::lock_guard<std::mutex> lock(mutex);
      --running;
      break;
    }
  }
  if (pool.empty()) {
    work(0);
  } else {
    std::unique_lock<std::mutex> lock(mutex);
    while (running > 0) {
      finished.wait_for(lock, kProgressInterval);
      if (progress && running > 0) {
        // Unlocked, so that a slow callback does not hold up finishing threads.
        lock.unlock();
        progress(done.load(), count, false);
        lock.lock();
      }
    }
  }
  for (std::thread& thread : pool) thread.join();
  if (progress) progress(done.load(), count, true);
  failure.rethrow();
}

}  // namespace quillon::lingomat::tools
