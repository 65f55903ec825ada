#include "engine_loader.h"

#include <ios>
#include <new>

#include "common/file_io.h"
#include "json/json_exception.h"

namespace quillon::lingomat::cli {

namespace {

// The library's status texts, so the tool reports failures the way hosts see them.
constexpr const char* kStatusMemory = "Memory";
constexpr const char* kStatusFileIo = "File I/O";
constexpr const char* kStatusJson = "Unable to process JSON";
constexpr const char* kStatusUnknown = "Unknown error";

std::string failure(const char* status, const std::string& data_file, const std::string& detail) {
  std::string message = std::string(status) + ": data file '" + data_file + "'";
  if (!detail.empty()) message += ": " + detail;
  return message;
}

}  // namespace

LoadedEngine load_engine(const CliOptions& options, const std::string& data_file) {
  LoadedEngine loaded;
  // The stream failure the engine raises carries no reason; find one first.
  if (std::string problem = tools::read_problem(data_file); !problem.empty()) {
    loaded.error = failure(kStatusFileIo, data_file, problem);
    return loaded;
  }
  Lingomat::Opts opts;
  opts.tokenizer.max_bytes = options.max_bytes;
  opts.tokenizer.max_tokens = options.max_tokens;
  opts.classifier.data_file = data_file;
  opts.classifier.min_tokens = options.min_tokens;
  opts.classifier.min_score_per_token = options.min_score;
  opts.restrictions = options.only;
  try {
    loaded.engine = std::make_unique<Lingomat>(opts);
  } catch (const JsonException& e) {
    loaded.error = failure(kStatusJson, data_file, e.what());
  } catch (const std::ios_base::failure&) {
    loaded.error = failure(kStatusFileIo, data_file, "cannot be read");
  } catch (const std::bad_alloc&) {
    loaded.error = failure(kStatusMemory, data_file, "");
  } catch (const std::exception& e) {
    loaded.error = failure(kStatusUnknown, data_file, e.what());
  }
  return loaded;
}

}  // namespace quillon::lingomat::cli
