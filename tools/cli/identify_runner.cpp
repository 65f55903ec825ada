#include "identify_runner.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include <unistd.h>

#include "file_reader.h"

namespace quillon::lingomat::cli {

namespace {

// How often the caller's thread wakes to report progress while it waits.
constexpr std::chrono::milliseconds kProgressInterval(100);

FileResult failure(std::string reason) {
  FileResult result;
  result.outcome = FileOutcome::kFailed;
  result.error = std::move(reason);
  return result;
}

FileResult identify_checked(const Lingomat& engine, const InputItem& item, bool explain) {
  if (item.list_error != 0) return failure(std::strerror(item.list_error));
  ReadResult read =
      item.is_stdin ? read_descriptor(STDIN_FILENO, false) : read_file(item.path, item.skip_binary);
  if (read.status == ReadStatus::kFailed) return failure(std::strerror(read.error));
  FileResult result;
  if (read.status == ReadStatus::kBinary) {
    result.outcome = FileOutcome::kSkippedBinary;
    return result;
  }
  result.bytes = read.content.size();
  result.language = engine.identify(item.name, read.content);
  if (explain) {
    result.evidence = explain_identification(engine, item.name, read.content, result.language);
  }
  result.outcome = FileOutcome::kIdentified;
  return result;
}

FileResult identify_item(const Lingomat& engine, const InputItem& item, bool explain) {
  // One file running out of memory (or tripping the engine) must not end the others.
  try {
    return identify_checked(engine, item, explain);
  } catch (const std::bad_alloc&) {
    return failure("out of memory");
  } catch (const std::exception& e) {
    return failure(std::string("identification failed: ") + e.what());
  }
}

}  // namespace

void identify_all(const Lingomat& engine, const std::vector<InputItem>& items,
                  const RunSettings& settings, const ResultSink& on_result,
                  const ProgressSink& on_progress) {
  const std::size_t total = items.size();
  std::vector<std::optional<FileResult>> slots(total);
  std::mutex mutex;
  std::condition_variable finished;
  std::atomic<std::size_t> next_item{0};
  std::size_t done = 0;

  auto work = [&] {
    for (std::size_t i = next_item++; i < total; i = next_item++) {
      FileResult result = identify_item(engine, items[i], settings.explain);
      {
        std::lock_guard<std::mutex> lock(mutex);
        slots[i] = std::move(result);
        ++done;
      }
      finished.notify_one();
    }
  };

  const std::size_t worker_count =
      std::min<std::size_t>(std::max(settings.jobs, 1u), std::max<std::size_t>(total, 1));
  std::vector<std::thread> workers;
  workers.reserve(worker_count);
  try {
    for (std::size_t w = 0; w < worker_count; ++w) workers.emplace_back(work);
  } catch (const std::system_error&) {
    // Fewer threads than asked for still finish the job; none at all means this one does.
    if (workers.empty()) work();
  }

  // Hand results over in order; later ones wait in their slots.
  std::size_t delivered = 0;
  while (delivered < total) {
    std::vector<FileResult> ready;
    std::size_t done_now = 0;
    {
      std::unique_lock<std::mutex> lock(mutex);
      finished.wait_for(lock, kProgressInterval, [&] { return slots[delivered].has_value(); });
      for (std::size_t i = delivered; i < total && slots[i].has_value(); ++i) {
        ready.push_back(std::move(*slots[i]));
        slots[i].reset();
      }
      done_now = done;
    }
    for (FileResult& result : ready) {
      on_result(items[delivered], std::move(result));
      ++delivered;
    }
    on_progress(done_now, total);
  }
  for (std::thread& worker : workers) worker.join();
}

}  // namespace quillon::lingomat::cli
