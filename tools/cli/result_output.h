#pragma once

#include <string>

#include "identify_runner.h"
#include "input_collector.h"

namespace quillon::lingomat::cli {

// "path<TAB>language\n", followed by the explanation when the result has one.
// Tabs, line breaks and backslashes in the path are written as \t, \n, \r and \\, other
// control characters (C0, DEL, C1) as \xHH per byte, so no path can act on a terminal.
std::string text_line(const InputItem& item, const FileResult& result);

// "path<TAB>language<NUL>" with the path as it is: for -0, where only NUL ends a record.
std::string null_terminated_line(const InputItem& item, const FileResult& result);

// One JSON object and a newline: path, language (null for none), evidence if any. A path
// that is not UTF-8 is written with U+FFFD in "path" and exactly in "path_base64".
std::string json_line(const InputItem& item, const FileResult& result);

// "lingomat: path: reason\n", for standard error, with the path escaped the same way.
std::string error_line(const InputItem& item, const FileResult& result);

}  // namespace quillon::lingomat::cli
