#include "engine_loader.h"

#include <algorithm>
#include <utility>

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
  EngineCreation created = create_engine(opts);
  LoadedEngine loaded;
  loaded.engine = std::move(created.engine);
  if (loaded.engine == nullptr) {
    // The library's status texts, so the tool reports failures the way hosts see them; the
    // runtime's text for a lack of memory is no reason.
    const bool memory = created.status == LINGOMAT_ERROR_MEMORY;
    loaded.error =
        failure(status_text(created.status), data_file, memory ? std::string() : created.reason);
  }
  return loaded;
}

}  // namespace quillon::lingomat::cli
