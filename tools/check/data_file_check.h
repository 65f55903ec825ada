#pragma once

#include <string>

#include "check/check_report.h"

namespace quillon::lingomat::tools {

// Every problem of a data file's text, each at the byte where it is: what makes the
// engine refuse it, plus what the engine would accept but turn into nonsense (counts
// that are negative or zero, totals that disagree with the counts, duplicate names,
// names that are not UTF-8 or hold NUL) or never use (names without statistics,
// statistics of unknown languages).
CheckReport check_data_text(const std::string& text);

// Throws a ToolError listing every error of `text`, a data file about to be written to
// `path`; warnings pass.
void require_valid_data_file(const std::string& text, const std::string& path);

// Builds an engine from `path` and reports its refusal as an error at the start of
// the file: a safety net, should the engine ever refuse what the text checks passed.
void cross_check_with_engine(const std::string& path, CheckReport& report);

}  // namespace quillon::lingomat::tools
