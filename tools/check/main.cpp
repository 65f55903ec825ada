// lingomat-check: validates a data file and explains every problem with its location.
#include <iostream>

#include "check/check_report.h"
#include "check/data_file_check.h"
#include "common/file_io.h"
#include "common/options.h"
#include "common/tool_main.h"

namespace lt = quillon::lingomat::tools;

namespace {

constexpr const char* kProgram = "lingomat-check";

int check(int argc, char** argv) {
  std::string path;
  bool strict = false;
  lt::OptionParser parser(kProgram,
                          "Checks a data file.\n"
                          "\n"
                          "Reports what the engine refuses, counts and totals that would give "
                          "nonsense\nscores, duplicate or malformed names, and languages that "
                          "are never used.");
  parser.set_epilogue(
      "Exit status: 0 when it has no errors, 1 when it has some, 2 for a bad\n"
      "command line.\n");
  parser.add_positional("FILE", "The data file to check.", &path);
  parser.add_flag("strict", "Warnings count as errors.", &strict);
  if (!parser.parse(argc, argv)) {
    std::cout << parser.exit_text();
    return 0;
  }

  const std::string text = lt::read_file(path, "data file");
  lt::CheckReport report = lt::check_data_text(text);
  if (report.count(lt::Severity::kError) == 0) lt::cross_check_with_engine(path, report);

  const lt::LineIndex lines(text);
  for (const lt::Problem& problem : report.problems) {
    std::cout << lt::format_problem(path, lines, problem) << "\n";
  }
  const std::size_t errors = report.count(lt::Severity::kError);
  const std::size_t warnings = report.count(lt::Severity::kWarning);
  std::cout << path << ": " << errors << (errors == 1 ? " error, " : " errors, ") << warnings
            << (warnings == 1 ? " warning\n" : " warnings\n");
  return errors > 0 || (strict && warnings > 0) ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  return lt::run_tool(kProgram, [&] { return check(argc, argv); });
}
