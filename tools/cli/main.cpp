// lingomat: names the language of files and trees with the shipped data.
#include <cstdio>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "cli_options.h"
#include "cli_run.h"
#include "common/tool_error.h"
#include "common/tool_main.h"

namespace cli = quillon::lingomat::cli;
namespace lt = quillon::lingomat::tools;

int main(int argc, char** argv) {
#if defined(__GLIBC__)
  // Loading the data file makes a few large temporaries, one after another. Served from the
  // heap instead of being mapped afresh each, they reuse the pages the previous ones freed:
  // a thousand page faults fewer at every start. Loading hands the rest back at its end.
  mallopt(M_MMAP_THRESHOLD, 64 << 20);
  mallopt(M_TRIM_THRESHOLD, 64 << 20);
#endif
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
