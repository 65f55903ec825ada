#pragma once

#include <string>

#include "check/check_report.h"

namespace quillon::lingomat::tools {

// Builds an engine from `path` and reports its refusal as an error at the start of
// the file: a safety net, should the engine ever refuse what the text checks passed.
void cross_check_with_engine(const std::string& path, CheckReport& report);

}  // namespace quillon::lingomat::tools
