#include "cli_options.h"

#include <algorithm>

#include "common/options.h"
#include "common/tool_error.h"

namespace quillon::lingomat::cli {

namespace {

constexpr const char* kSummary =
    "Name the programming or markup language of each file.\n"
    "\n"
    "Prints one line per file: the path, a tab, and the language (nothing after the\n"
    "tab when no language was found). Directories are walked recursively, skipping\n"
    "version-control folders, what .gitignore and .ignore files exclude, and files\n"
    "that look binary. '-' reads standard input.";

constexpr const char* kExitStatus =
    "Exit status: 0 if every file was read, 1 if some files could not be read\n"
    "or the output could not be written, 2 for a usage error or a data file that\n"
    "cannot be loaded.\n";

// Where the data file is looked for without --data (data_file_locator.cpp), and a few uses.
std::string files_and_examples() {
  return std::string(
             "\n"
             "Files:\n"
             "  lingomat.json  The data file, unless --data names one: the first that\n"
             "                 exists of ") +
         LINGOMAT_DATA_FROM_BINDIR + " (from the\n                 binary's folder), " +
         LINGOMAT_INSTALLED_DATA +
         ",\n                 and, for a binary still in its build tree, the source\n"
         "                 tree's data/lingomat.json.\n"
         "\n"
         "Examples:\n"
         "  lingomat src/main.c             The language of one file.\n"
         "  lingomat --summary .            Languages of a tree, by files and bytes.\n"
         "  lingomat --explain notes        Why a file got its answer, or none.\n"
         "  git ls-files -z | lingomat -0 --files-from -\n"
         "                                  The files git tracks, NUL-separated.\n"
         "  lingomat --name x.py -          Standard input, named as a Python file.\n";
}

std::string with_default(const std::string& text, const std::string& shown) {
  return text + " (default " + shown + ").";
}

// Every option of the tool, writing into `options`.
tools::OptionParser option_parser(CliOptions& options) {
  tools::OptionParser parser("lingomat", kSummary);
  parser.add_positionals("PATH...", "A file or folder to identify; '-' is standard input.",
                         &options.paths);

  parser.add_section("Output");
  parser.add_flag("json", "One JSON object per line (language null when unknown).", &options.json);
  parser.add_flag("explain", "Show why each file got its language.", &options.explain);
  parser.add_flag("summary",
                  "A per-language table (files, bytes, share of bytes) instead of one line per "
                  "file.",
                  &options.summary);

  parser.add_section("Identification");
  parser.add_string("data", "FILE", "The data file (default: the one shipped with lingomat).",
                    &options.data_file);
  parser.add_string("name", "NAME", "File name to use for standard input.", &options.stdin_name);
  parser.add_strings("only", "LANG",
                     "Restrict the possible answers to LANG (repeat for several): every file is "
                     "then named LANG or one of the others, or nothing; it does not filter the "
                     "output. Unknown names are refused (see --list-languages).",
                     &options.only);
  parser.add_uint("max-bytes", "N",
                  with_default("Tokens start only in the first N bytes; 0: no limit",
                               std::to_string(kDefaultMaxBytes)),
                  &options.max_bytes);
  parser.add_uint(
      "max-tokens", "N",
      with_default("Stop tokenizing at N tokens; 0: no limit", std::to_string(kDefaultMaxTokens)),
      &options.max_tokens);
  parser.add_uint("min-tokens", "N",
                  with_default("Fewer tokens give no answer from content alone; 0: no minimum",
                               std::to_string(kDefaultMinTokens)),
                  &options.min_tokens);
  parser.add_double(
      "min-score", "X",
      with_default("Drop answers from content alone scoring below X per token; 0: off",
                   tools::OptionParser::format_default(kDefaultMinScore)),
      &options.min_score);
  parser.add_flag("same-floors",
                  "Apply --min-tokens and --min-score among the candidates a name gives too, "
                  "and give prose no floor of its own, as the library does (with "
                  "--min-tokens 40 --min-score -8: the library's answers).",
                  &options.same_floors);

  parser.add_section("Walking directories");
  parser.add_string("files-from", "FILE",
                    "Also identify the paths listed in FILE, one per line ('-': standard "
                    "input; a pipe or <(...) works too).",
                    &options.files_from);
  parser.add_flag("null",
                  "--files-from lists are NUL-separated, and plain output lines end in NUL "
                  "with paths written as they are.",
                  &options.null_separated);
  parser.add_alias('0', "null");
  parser.add_strings("exclude", "GLOB",
                     "Leave out walked files and folders whose name or path below the walked "
                     "directory matches GLOB (repeatable).",
                     &options.excludes);
  parser.add_flag("no-ignore",
                  "Also walk what ignore files exclude (.gitignore, .ignore, and in a git work "
                  "tree info/exclude and core.excludesFile).",
                  &options.no_ignore);

  parser.add_section("Other");
  parser.add_flag("list-languages",
                  "Print the data file's languages and their extensions (one JSON object per "
                  "language with --json), then exit.",
                  &options.list_languages);
  parser.add_uint("jobs", "N", "Worker threads (default: one per core).", &options.jobs, 1,
                  kMaxJobs);
  parser.add_alias('j', "jobs");
  parser.set_epilogue(kExitStatus + files_and_examples());
  return parser;
}

// Rules that involve more than one option.
void check_combination(const CliOptions& options) {
  if (options.list_languages) {
    if (!options.paths.empty()) throw tools::UsageError("--list-languages takes no PATH");
    return;
  }
  if (options.paths.empty() && options.files_from.empty()) {
    throw tools::UsageError("no PATH given (use '-' for standard input)");
  }
  const auto stdin_count = std::count(options.paths.begin(), options.paths.end(), "-");
  if (stdin_count > 1) throw tools::UsageError("standard input ('-') can be given only once");
  if (stdin_count > 0 && options.files_from == "-") {
    throw tools::UsageError("standard input cannot be both a PATH ('-') and --files-from -");
  }
  if (options.null_separated && options.explain && !options.json) {
    throw tools::UsageError("-0 and --explain cannot be combined (the explanation spans lines)");
  }
  if (!options.stdin_name.empty() && stdin_count == 0) {
    throw tools::UsageError("--name applies to standard input, but '-' is not among the paths");
  }
  if (options.explain && options.summary) {
    throw tools::UsageError("--explain and --summary cannot be combined");
  }
}

}  // namespace

ParsedCommandLine parse_command_line(int argc, const char* const* argv) {
  ParsedCommandLine parsed;
  try {
    tools::OptionParser parser = option_parser(parsed.options);
    if (!parser.parse(argc, argv)) {
      parsed.action = parser.version_asked() ? CommandAction::kVersion : CommandAction::kHelp;
      parsed.text = parser.exit_text();
      return parsed;
    }
    check_combination(parsed.options);
  } catch (const tools::UsageError& error) {
    parsed.action = CommandAction::kUsageError;
    parsed.error = error.what();
  }
  return parsed;
}

}  // namespace quillon::lingomat::cli
