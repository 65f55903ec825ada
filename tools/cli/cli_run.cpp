#include "cli_run.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "base/file_reading.h"
#include "common/file_io.h"
#include "common/parallel.h"
#include "common/progress_line.h"
#include "common/tool_error.h"
#include "data_file_locator.h"
#include "engine_loader.h"
#include "identify_runner.h"
#include "input_collector.h"
#include "language_catalog.h"
#include "language_summary.h"
#include "result_output.h"

namespace quillon::lingomat::cli {

namespace {

std::string chosen_data_file(const CliOptions& options) {
  if (!options.data_file.empty()) return options.data_file;
  return find_default_data_file();
}

std::string no_data_file_message() {
  std::string message = "File I/O: no data file found (looked for";
  const char* separator = " ";
  for (const std::string& candidate : default_data_file_candidates()) {
    message += separator + candidate;
    separator = ", ";
  }
  return message + "); name one with --data FILE";
}

unsigned worker_count(const CliOptions& options) {
  // The parser keeps --jobs within kMaxJobs.
  return options.jobs != 0 ? static_cast<unsigned>(options.jobs) : tools::default_thread_count();
}

void write_out(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

// Output that could not be written is a failure of the run, not of one file.
void finish_output() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    throw tools::ToolError(std::string("cannot write the output: ") + std::strerror(errno),
                           kExitSomeFilesFailed);
  }
}

// The whole --files-from list. It is read from whatever it names: a file, a pipe, a
// process substitution (/dev/fd/63) or standard input; the user asked for that stream, so
// waiting for its writer is right. Only a folder is refused.
tools::ReadResult read_list(const std::string& list) {
  if (list == "-") return tools::try_read_descriptor(STDIN_FILENO);
  const FileDescriptor file(::open(list.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC));
  if (file.get() < 0) {
    tools::ReadResult failed;
    failed.error = std::strerror(errno);
    return failed;
  }
  return tools::try_read_descriptor(file.get());
}

// The paths of a --files-from list, split at line feeds or (with -0) NULs; empty entries
// are skipped.
std::vector<std::string> listed_paths(const CliOptions& options) {
  const tools::ReadResult read = read_list(options.files_from);
  if (read.status != tools::ReadStatus::kRead) {
    throw tools::ToolError("cannot read --files-from " + options.files_from + ": " + read.error,
                           kExitUsageOrData);
  }
  const char separator = options.null_separated ? '\0' : '\n';
  std::vector<std::string> paths;
  std::size_t start = 0;
  while (start < read.content.size()) {
    std::size_t end = read.content.find(separator, start);
    if (end == std::string::npos) end = read.content.size();
    if (end > start) paths.push_back(read.content.substr(start, end - start));
    start = end + 1;
  }
  return paths;
}

// Refuses the first --only name the data file does not know.
void check_only_names(const std::vector<std::string>& only,
                      const std::vector<LanguageEntry>& catalog) {
  if (const std::string* name = first_unknown_name(only, catalog)) {
    throw tools::UsageError("unknown language '" + *name + "' for --only" +
                            did_you_mean(*name, catalog) + " (--list-languages shows every name)");
  }
}

}  // namespace

int run_identification(const CliOptions& options) {
  const std::string data_file = chosen_data_file(options);
  if (data_file.empty()) throw tools::ToolError(no_data_file_message(), kExitUsageOrData);
  const LoadedEngine loaded = load_engine(options, data_file);
  if (!loaded.engine) throw tools::ToolError(loaded.error, kExitUsageOrData);
  if (options.list_languages || !options.only.empty()) {
    const std::vector<LanguageEntry> catalog = language_catalog(*loaded.engine);
    if (options.list_languages) {
      write_out(options.json ? catalog_json_lines(catalog) : catalog_text(catalog));
      finish_output();
      return kExitSuccess;
    }
    check_only_names(options.only, catalog);
  }

  std::vector<std::string> paths = options.paths;
  if (!options.files_from.empty()) {
    std::vector<std::string> listed = listed_paths(options);
    paths.insert(paths.end(), listed.begin(), listed.end());
  }
  const std::vector<InputItem> items =
      collect_inputs(paths, options.stdin_name, {options.excludes, !options.no_ignore});
  tools::ProgressLine progress(stderr, "lingomat", items.size());
  // Only a terminal on standard output shares the line the progress is drawn on.
  const bool output_on_terminal = ::isatty(STDOUT_FILENO) == 1;
  LanguageSummary summary;
  bool some_failed = false;

  RunSettings settings;
  settings.jobs = worker_count(options);
  settings.explain = options.explain;
  settings.floors = floor_policy(options);
  settings.prose_floor = !options.same_floors;
  identify_all(
      *loaded.engine, items, settings,
      [&](const InputItem& item, FileResult result) {
        switch (result.outcome) {
          case FileOutcome::kFailed:
            some_failed = true;
            progress.clear();
            std::fputs(error_line(item, result).c_str(), stderr);
            break;
          case FileOutcome::kSkippedBinary:
            break;
          case FileOutcome::kIdentified:
            if (options.summary) {
              summary.add(result.language, result.bytes);
              break;
            }
            if (output_on_terminal) progress.clear();
            write_out(options.json             ? json_line(item, result)
                      : options.null_separated ? null_terminated_line(item, result)
                                               : text_line(item, result));
            break;
        }
      },
      [&](std::size_t done, std::size_t) { progress.update(done); });
  progress.clear();

  if (options.summary) write_out(options.json ? summary.json_lines() : summary.table());
  finish_output();
  return some_failed ? kExitSomeFilesFailed : kExitSuccess;
}

}  // namespace quillon::lingomat::cli
