#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "explanation.h"
#include "input_collector.h"

namespace quillon::lingomat::cli {

enum class FileOutcome { kIdentified, kSkippedBinary, kFailed };

struct FileResult {
  FileOutcome outcome = FileOutcome::kFailed;
  std::string language;  // empty: no answer
  std::uint64_t bytes = 0;
  std::string error;  // the reason, when kFailed
  std::optional<Evidence> evidence;
};

struct RunSettings {
  unsigned jobs = 1;
  bool explain = false;
  Lingomat::FloorPolicy floors;
  bool prose_floor = true;  // prose that nothing names needs kProseMinScore
};

// Called on the caller's thread, in item order.
using ResultSink = std::function<void(const InputItem& item, FileResult result)>;
// Called on the caller's thread about five times a second and at the end: items finished so far.
using ProgressSink = std::function<void(std::size_t done, std::size_t total)>;

// Identifies every item with one shared engine on `jobs` threads and hands the
// results over in item order, whatever order the threads finish in. When a
// sink throws, the workers are stopped and joined before the exception leaves.
void identify_all(const Lingomat& engine, const std::vector<InputItem>& items,
                  const RunSettings& settings, const ResultSink& on_result,
                  const ProgressSink& on_progress);

}  // namespace quillon::lingomat::cli
