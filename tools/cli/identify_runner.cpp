#include "identify_runner.h"

#include <exception>
#include <mutex>
#include <new>
#include <string_view>
#include <system_error>

#include <unistd.h>

#include "base/file_reading.h"
#include "cli_options.h"
#include "common/input_text.h"
#include "common/parallel.h"
#include "input/identification_text.h"
#include "prose_test.h"
#include "walked_file.h"

namespace quillon::lingomat::cli {

namespace {

FileResult failure(std::string reason) {
  FileResult result;
  result.outcome = FileOutcome::kFailed;
  result.error = std::move(reason);
  return result;
}

// A walked file, opened without leaving the tree, then read like any other descriptor.
tools::InputResult open_walked_input(const InputItem& item, const Tokenizer& tokenizer) {
  tools::InputResult result;
  std::uint64_t size = 0;
  const FileDescriptor file(open_walked_file(item, result.error, size));
  if (file.get() < 0) return result;
  return tools::open_input_regular(file.get(), size, true, &tokenizer);
}

// Prose that nothing names gets the stricter prose floor; a floor that is off stays off.
Lingomat::FloorPolicy floors_for(const Lingomat& engine, std::string_view name,
                                 std::string_view text, Lingomat::FloorPolicy floors) {
  double& floor = floors.content_only.min_score_per_token;
  if (floor != 0.0 && floor < kProseMinScore && engine.candidates(name, text).empty() &&
      reads_as_prose(text)) {
    floor = kProseMinScore;
  }
  return floors;
}

FileResult identify_checked(const Lingomat& engine, const InputItem& item,
                            const RunSettings& settings) {
  if (item.list_error != 0) {
    return failure(std::generic_category().message(item.list_error));
  }
  // Only what identification reads of an input is read, so its answer is the one for the
  // whole input while the memory it costs stays bounded.
  const Tokenizer& tokenizer = engine.tokenizer();
  tools::InputResult read =
      item.is_stdin             ? tools::open_input_descriptor(STDIN_FILENO, false, &tokenizer)
      : !item.walk_root.empty() ? open_walked_input(item, tokenizer)
                                : tools::open_input_file(item.path, item.skip_binary, &tokenizer);
  if (read.status == tools::ReadStatus::kFailed) return failure(std::move(read.error));
  FileResult result;
  if (read.status == tools::ReadStatus::kBinary) {
    result.outcome = FileOutcome::kSkippedBinary;
    return result;
  }
  result.bytes = read.size;
  // UTF-16 is converted only as far as the engine reads.
  const IdentificationText prepared(read.text, tokenizer);
  const std::string_view text = prepared.view();
  const Lingomat::FloorPolicy floors =
      settings.prose_floor ? floors_for(engine, item.name, text, settings.floors) : settings.floors;
  if (settings.explain) {
    // One run of the pipeline gives both the answer and its explanation.
    const Lingomat::Trace trace = engine.trace(item.name, text, floors);
    result.language = trace.answer;
    result.evidence = explain_identification(trace, item.name);
  } else {
    result.language = engine.identify(item.name, text, floors);
  }
  result.outcome = FileOutcome::kIdentified;
  return result;
}

FileResult identify_item(const Lingomat& engine, const InputItem& item,
                         const RunSettings& settings) {
  // One file running out of memory (or tripping the engine) must not end the others.
  try {
    return identify_checked(engine, item, settings);
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
  std::size_t delivered = 0;

  // Hands over the results that are ready, in item order; later ones wait in their slots.
  const auto deliver_ready = [&] {
    std::vector<FileResult> ready;
    {
      std::lock_guard<std::mutex> lock(mutex);
      for (std::size_t i = delivered; i < total && slots[i].has_value(); ++i) {
        ready.push_back(std::move(*slots[i]));
        slots[i].reset();
      }
    }
    for (FileResult& result : ready) {
      on_result(items[delivered], std::move(result));
      ++delivered;
    }
  };

  tools::run_parallel(
      total, settings.jobs,
      [&](std::size_t index, unsigned) {
        FileResult result = identify_item(engine, items[index], settings);
        std::lock_guard<std::mutex> lock(mutex);
        slots[index] = std::move(result);
      },
      [&](std::size_t done, std::size_t, bool) {
        deliver_ready();
        on_progress(done, total);
      });
}

}  // namespace quillon::lingomat::cli
