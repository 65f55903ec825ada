// The tools' thread pool.
#include "common/parallel.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace quillon::lingomat::tools {
namespace {

TEST(ParallelTest, RunsEveryIndexOnceWhateverTheThreadCount) {
  for (const unsigned threads : {0u, 1u, 3u, 64u}) {
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{500}}) {
      std::vector<std::atomic<int>> runs(count);
      run_parallel(count, threads, [&](std::size_t index, unsigned worker) {
        EXPECT_LT(worker, std::max(threads, 1u));
        ++runs[index];
      });
      EXPECT_EQ(std::vector<int>(runs.begin(), runs.end()), std::vector<int>(count, 1))
          << count << " tasks on " << threads << " threads";
    }
  }
}

TEST(ParallelTest, ReportsTheLowestFailingIndexAndClaimsNoMore) {
  std::atomic<int> ran{0};
  try {
    run_parallel(200, 4, [&](std::size_t index, unsigned) {
      ++ran;
      // The lower failing index fails last, and must still be the one reported.
      if (index == 1) std::this_thread::sleep_for(std::chrono::milliseconds(50));
      if (index == 1 || index == 2) throw std::runtime_error("task " + std::to_string(index));
      // Slow enough that a throw (slow under sanitizers) ends the run before all are claimed.
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    });
    ADD_FAILURE() << "no exception";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "task 1");
  }
  EXPECT_LT(ran.load(), 200);
}

// A throwing progress callback must not end the process (joinable threads
// destroyed while unwinding would), and no task may still be running after.
TEST(ParallelTest, AThrowingProgressCallbackStopsAndJoinsTheWorkers) {
  std::atomic<int> running{0}, started{0};
  const auto task = [&](std::size_t, unsigned) {
    ++running;
    ++started;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    --running;
  };
  const auto progress = [](std::size_t, std::size_t, bool) {
    throw std::runtime_error("progress failed");
  };
  EXPECT_THROW(run_parallel(1000, 4, task, progress), std::runtime_error);
  EXPECT_EQ(running.load(), 0);
  EXPECT_LT(started.load(), 1000);
}

// With too little address space for all the thread stacks asked for, the
// threads that could start (or the calling thread) still do every task.
TEST(ParallelTest, FewerThreadsThanAskedStillFinishTheWork) {
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    // Room for a few default-sized stacks at most.
    const rlim_t limit = pages * sysconf(_SC_PAGESIZE) + (24 << 20);
    const rlimit room{limit, limit};
    if (setrlimit(RLIMIT_AS, &room) != 0) _exit(3);
    std::vector<int> runs(2000, 0);
    try {
      run_parallel(runs.size(), 512, [&](std::size_t index, unsigned) { ++runs[index]; });
    } catch (...) {
      _exit(2);
    }
    _exit(runs == std::vector<int>(2000, 1) ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace quillon::lingomat::tools
