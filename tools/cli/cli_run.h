#pragma once

#include "cli_options.h"

namespace quillon::lingomat::cli {

// Exit statuses, following the usual conventions for file tools.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitSomeFilesFailed = 1;
inline constexpr int kExitUsageOrData = 2;

// Loads the data, identifies every path and prints the results; returns the exit status.
// A failure of the whole run is thrown: a tools::ToolError carrying its exit status, or a
// tools::UsageError.
int run_identification(const CliOptions& options);

}  // namespace quillon::lingomat::cli
