// lingomat: names the language of files and trees with the shipped data.
#include <cstdio>

#include "cli_options.h"
#include "cli_run.h"

using quillon::lingomat::cli::CommandAction;

int main(int argc, char** argv) {
  namespace cli = quillon::lingomat::cli;
  const cli::ParsedCommandLine parsed = cli::parse_command_line(argc, argv);
  switch (parsed.action) {
    case CommandAction::kHelp:
      std::fputs(cli::help_text().c_str(), stdout);
      return cli::kExitSuccess;
    case CommandAction::kVersion:
      std::printf("lingomat %s\n", LINGOMAT_VERSION);
      return cli::kExitSuccess;
    case CommandAction::kUsageError:
      std::fprintf(stderr, "lingomat: %s\nTry 'lingomat --help' for more information.\n",
                   parsed.error.c_str());
      return cli::kExitUsageOrData;
    case CommandAction::kRun:
      break;
  }
  return cli::run_identification(parsed.options);
}
