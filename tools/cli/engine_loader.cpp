#include "engine_loader.h"

#include <algorithm>

#include "common/file_io.h"
#include "engine/status.h"

namespace quillon::lingomat::cli {

namespace {

std::string failure(const char* status, const std::string& data_file, const std::string& detail) {
  std::string message = std::string(status) + ": data file '" + data_file + "'";
  if (!detail.empty()) message += ": " + detail;
  return message;
}

}  // namespace

Lingomat::FloorPolicy floor_policy(const CliOptions& options) {
  const Lingomat::Floors content_only{options.min_tokens, options.min_score};
  return {options.same_floors ? content_only : kCandidateFloors, content_only};
}

LoadedEngine load_engine(const CliOptions& options, const std::string& data_file) {
  LoadedEngine loaded;
  // The stream failure the engine raises carries no reason; find one first.
  if (std::string problem = tools::read_problem(data_file); !problem.empty()) {
    // The library's status texts, so the tool reports failures the way hosts see them.
    loaded.error = failure(status_text(LINGOMAT_ERROR_FILE_IO), data_file, problem);
    return loaded;
  }
  Lingomat::Opts opts;
  opts.tokenizer.max_bytes = options.max_bytes;
  opts.tokenizer.max_tokens = options.max_tokens;
  opts.classifier.data_file = data_file;
  // The per-call floors decide; the classifier's own minimum must not pre-empt either.
  const Lingomat::FloorPolicy floors = floor_policy(options);
  const std::uint64_t lower = floors.among_candidates.min_tokens;
  const std::uint64_t content = floors.content_only.min_tokens;
  opts.classifier.min_tokens = lower == 0 || content == 0 ? 0 : std::min(lower, content);
  opts.classifier.min_score_per_token = options.min_score;
  opts.restrictions = options.only;
  try {
    loaded.engine = std::make_unique<Lingomat>(opts);
  } catch (...) {
    const int status = status_of_current_exception();
    // A stream failure's own message is the runtime's, not a reason; memory needs none.
    const std::string detail = status == LINGOMAT_ERROR_FILE_IO  ? "cannot be read"
                               : status == LINGOMAT_ERROR_MEMORY ? std::string()
                                                                 : message_of_current_exception();
    loaded.error = failure(status_text(status), data_file, detail);
  }
  return loaded;
}

}  // namespace quillon::lingomat::cli
