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

// The tool's floors: the options' for answers from content alone, kCandidateFloors among the
// candidates that names give (the options' too with --same-floors).
Lingomat::FloorPolicy floor_policy(const CliOptions& options);

// Builds the engine from the data file and the identification options, with a classifier
// minimum no higher than either of floor_policy()'s.
LoadedEngine load_engine(const CliOptions& options, const std::string& data_file);

}  // namespace quillon::lingomat::cli
