// lingomat: names the language of files and trees with the shipped data.
#include <cstdio>

#include "cli_options.h"
#include "cli_run.h"
#include "common/tool_error.h"
#include "common/tool_main.h"

namespace cli = quillon::lingomat::cli;
namespace lt = quillon::lingomat::tools;

int main(int argc, char** argv) {
  return lt::run_tool("lingomat", [&] {
    const cli::ParsedCommandLine parsed = cli::parse_command_line(argc, argv);
    switch (parsed.action) {
      case cli::CommandAction::kHelp:
      case cli::CommandAction::kVersion:
        std::fputs(parsed.text.c_str(), stdout);
        return cli::kExitSuccess;
      case cli::CommandAction::kUsageError:
        throw lt::UsageError(parsed.error);
      case cli::CommandAction::kRun:
        break;
    }
    return cli::run_identification(parsed.options);
  });
}
