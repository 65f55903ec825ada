#pragma once

#include <string>
#include <vector>

namespace quillon::lingomat::cli {

// Where the shipped data file may be, in lookup order: beside an installed or
// relocated binary, the configured install location, then (only for the binary
// still in its build tree) the source tree it was built from.
std::vector<std::string> default_data_file_candidates();

// The first candidate that exists, or an empty string.
std::string find_default_data_file();

}  // namespace quillon::lingomat::cli
