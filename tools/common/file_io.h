#pragma once

#include <string>

namespace quillon::lingomat::tools {

// The whole content of a file. `what` names the file's role in the message of
// the ToolError thrown when it cannot be read ("cannot read <what> <path>: <reason>").
std::string read_file(const std::string& path, const std::string& what);

// Replaces `path` with `content` all at once: the bytes go to a temporary file
// in the same folder, which is renamed over `path` only when complete. On
// failure the temporary file is removed, `path` is untouched, and a ToolError
// names the file.
void write_file_atomically(const std::string& path, const std::string& content);

}  // namespace quillon::lingomat::tools
