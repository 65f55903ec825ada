#pragma once

#include <string>
#include <vector>

#include "common/definitions.h"
#include "train/token_statistics.h"

namespace quillon::lingomat::tools {

// The data file as JSON text. statistics[i] belongs to languages[i]; a
// language with no samples gets its name entries only. Name lists keep the
// definitions order, which decides the fallback among shared names; tokens
// are in byte order. Throws ToolError when a count does not fit the signed
// 32-bit integers the engine reads.
std::string render_data_file(const std::vector<LanguageDefinition>& languages,
                             const std::vector<LanguageStatistics>& statistics);

}  // namespace quillon::lingomat::tools
