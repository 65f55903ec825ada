#include "common/tool_main.h"

#include <iostream>
#include <new>

#include "common/tool_error.h"

namespace quillon::lingomat::tools {

int run_tool(const char* program, const std::function<int()>& body) {
  try {
    return body();
  } catch (const UsageError& error) {
    std::cerr << program << ": " << error.what() << "\nTry '" << program
              << " --help' for more information.\n";
    return 2;
  } catch (const ToolError& error) {
    std::cerr << program << ": " << error.what() << "\n";
    return error.exit_status();
  } catch (const std::bad_alloc&) {
    std::cerr << program << ": out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << program << ": internal error: " << error.what() << "\n";
  }
  return 1;
}

}  // namespace quillon::lingomat::tools
