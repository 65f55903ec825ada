#pragma once

#include <memory>
#include <string>

#include "cli_options.h"
#include "engine/engine.h"

namespace quillon::lingomat::cli {

struct LoadedEngine {
  std::unique_ptr<Lingomat> engine;  // null when loading failed
  std::string error;                 // one line naming the status and the data file
};

// Builds the engine from the data file and the identification options.
LoadedEngine load_engine(const CliOptions& options, const std::string& data_file);

}  // namespace quillon::lingomat::cli
