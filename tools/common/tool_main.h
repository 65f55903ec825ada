#pragma once

#include <functional>

namespace quillon::lingomat::tools {

// Runs a tool's body and turns its exceptions into a message on standard
// error and an exit status: 2 for a UsageError, the ToolError's own, 1 for anything else.
int run_tool(const char* program, const std::function<int()>& body);

}  // namespace quillon::lingomat::tools
