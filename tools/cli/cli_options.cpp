#include "cli_options.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>

#include "common/options.h"
#include "common/tool_error.h"

namespace quillon::lingomat::cli {

namespace {

ParsedCommandLine usage_error(std::string reason) {
  ParsedCommandLine parsed;
  parsed.action = CommandAction::kUsageError;
  parsed.error = std::move(reason);
  return parsed;
}

// Applies the value of one option; returns an error text, empty on success.
using ValueSetter = std::function<std::string(CliOptions&, const std::string&)>;

// Runs one of the toolkit's strict conversions; its message is the error text.
template <typename Convert>
std::string converted(const Convert& convert) {
  try {
    convert();
    return {};
  } catch (const tools::UsageError& error) {
    return error.what();
  }
}

// `option` without its leading dashes, as the toolkit's conversions name it.
ValueSetter unsigned_setter(const std::string& option, std::uint64_t CliOptions::*field,
                            std::uint64_t min = 0, std::uint64_t max = UINT64_MAX) {
  return [option, field, min, max](CliOptions& options, const std::string& value) {
    return converted(
        [&] { options.*field = tools::OptionParser::to_uint(option, value, min, max); });
  };
}

const std::map<std::string, ValueSetter>& value_options() {
  static const std::map<std::string, ValueSetter> setters = {
      {"--data",
       [](CliOptions& options, const std::string& value) -> std::string {
         if (value.empty()) return "--data needs a file name";
         options.data_file = value;
         return {};
       }},
      {"--name",
       [](CliOptions& options, const std::string& value) -> std::string {
         if (value.empty()) return "--name needs a file name";
         options.stdin_name = value;
         return {};
       }},
      {"--only",
       [](CliOptions& options, const std::string& value) -> std::string {
         if (value.empty()) return "--only needs a language name";
         options.only.push_back(value);
         return {};
       }},
      {"--files-from",
       [](CliOptions& options, const std::string& value) -> std::string {
         if (value.empty()) return "--files-from needs a file name ('-' for standard input)";
         options.files_from = value;
         return {};
       }},
      {"--exclude",
       [](CliOptions& options, const std::string& value) -> std::string {
         if (value.empty()) return "--exclude needs a pattern";
         options.excludes.push_back(value);
         return {};
       }},
      {"--max-bytes", unsigned_setter("max-bytes", &CliOptions::max_bytes)},
      {"--max-tokens", unsigned_setter("max-tokens", &CliOptions::max_tokens)},
      {"--min-tokens", unsigned_setter("min-tokens", &CliOptions::min_tokens)},
      {"--min-score",
       [](CliOptions& options, const std::string& value) {
         return converted(
             [&] { options.min_score = tools::OptionParser::to_double("min-score", value); });
       }},
      {"--jobs",
       [](CliOptions& options, const std::string& value) {
         return converted([&] {
           options.jobs =
               static_cast<unsigned>(tools::OptionParser::to_uint("jobs", value, 1, kMaxJobs));
         });
       }},
  };
  return setters;
}

const std::map<std::string, bool CliOptions::*>& flag_options() {
  static const std::map<std::string, bool CliOptions::*> flags = {
      {"--json", &CliOptions::json},
      {"--explain", &CliOptions::explain},
      {"--summary", &CliOptions::summary},
      {"--no-ignore", &CliOptions::no_ignore},
      {"--list-languages", &CliOptions::list_languages},
      {"--null", &CliOptions::null_separated},
  };
  return flags;
}

// Rules that involve more than one option.
std::string check_combination(const CliOptions& options) {
  if (options.list_languages) {
    if (!options.paths.empty()) return "--list-languages takes no PATH";
    return {};
  }
  if (options.paths.empty() && options.files_from.empty()) {
    return "no PATH given (use '-' for standard input)";
  }
  const auto stdin_count = std::count(options.paths.begin(), options.paths.end(), "-");
  if (stdin_count > 1) return "standard input ('-') can be given only once";
  if (stdin_count > 0 && options.files_from == "-") {
    return "standard input cannot be both a PATH ('-') and --files-from -";
  }
  if (options.null_separated && options.explain && !options.json) {
    return "-0 and --explain cannot be combined (the explanation spans lines)";
  }
  if (!options.stdin_name.empty() && stdin_count == 0) {
    return "--name applies to standard input, but '-' is not among the paths";
  }
  if (options.explain && options.summary) return "--explain and --summary cannot be combined";
  return {};
}

}  // namespace

ParsedCommandLine parse_command_line(int argc, const char* const* argv) {
  ParsedCommandLine parsed;
  CliOptions& options = parsed.options;
  bool options_ended = false;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (options_ended || arg == "-" || arg.empty() || arg[0] != '-') {
      options.paths.push_back(arg);
      continue;
    }
    if (arg == "--") {
      options_ended = true;
      continue;
    }
    if (arg == "-h" || arg == "--help") {
      parsed.action = CommandAction::kHelp;
      return parsed;
    }
    if (arg == "--version") {
      parsed.action = CommandAction::kVersion;
      return parsed;
    }
    if (const auto flag = flag_options().find(arg == "-0" ? "--null" : arg);
        flag != flag_options().end()) {
      options.*(flag->second) = true;
      continue;
    }

    // Value options: "--opt VALUE", "--opt=VALUE", "-j N", "-jN".
    std::string name = arg;
    std::string value;
    bool value_attached = false;
    if (arg.rfind("--", 0) == 0) {
      const auto equals = arg.find('=');
      if (equals != std::string::npos) {
        name = arg.substr(0, equals);
        value = arg.substr(equals + 1);
        value_attached = true;
      }
    } else if (arg.rfind("-j", 0) == 0) {
      name = "--jobs";
      if (arg.size() > 2) {
        value = arg.substr(2);
        value_attached = true;
      }
    }
    const auto setter = value_options().find(name);
    if (setter == value_options().end()) {
      if (flag_options().count(name) != 0) return usage_error(name + " takes no value");
      return usage_error("unknown option '" + arg + "'");
    }
    if (!value_attached) {
      // The next argument is the value even when it starts with '-' (--min-score -6).
      if (i + 1 >= argc) return usage_error(name + " needs a value");
      value = argv[++i];
    }
    if (std::string error = setter->second(options, value); !error.empty()) {
      return usage_error(std::move(error));
    }
  }
  if (std::string error = check_combination(options); !error.empty()) {
    return usage_error(std::move(error));
  }
  return parsed;
}

std::string help_text() {
  char defaults[512];
  std::snprintf(defaults, sizeof defaults,
                "      --max-bytes N    tokens start only in the first N bytes; 0: no limit "
                "(default %llu)\n"
                "      --max-tokens N   stop tokenizing at N tokens; 0: no limit (default %llu)\n"
                "      --min-tokens N   fewer tokens give no classifier answer; 0: no minimum "
                "(default %llu)\n"
                "      --min-score X    drop classifier answers scoring below X per token; "
                "0: off (default %g)\n",
                static_cast<unsigned long long>(kDefaultMaxBytes),
                static_cast<unsigned long long>(kDefaultMaxTokens),
                static_cast<unsigned long long>(kDefaultMinTokens), kDefaultMinScore);
  return std::string(
             "Usage: lingomat [OPTION]... PATH...\n"
             "Name the programming or markup language of each file.\n"
             "\n"
             "Prints one line per file: the path, a tab, and the language (nothing after the\n"
             "tab when no language was found). Directories are walked recursively, skipping\n"
             "version-control folders, what .gitignore and .ignore files exclude, and files\n"
             "that look binary. '-' reads standard input.\n"
             "\n"
             "Output:\n"
             "      --json           one JSON object per line (language null when unknown)\n"
             "      --explain        show why each file got its language\n"
             "      --summary        a per-language table (files, bytes, share of bytes)\n"
             "                       instead of one line per file\n"
             "\n"
             "Identification:\n"
             "      --data FILE      the data file (default: the one shipped with lingomat)\n"
             "      --name NAME      file name to use for standard input\n"
             "      --only LANG      restrict the possible answers to LANG (repeat for\n"
             "                       several): every file is then named LANG or one of\n"
             "                       the others, or nothing; it does not filter the output.\n"
             "                       Unknown names are refused (see --list-languages)\n") +
         defaults +
         "\n"
         "Walking directories:\n"
         "      --files-from FILE  also identify the paths listed in FILE, one per line\n"
         "                       ('-': standard input)\n"
         "  -0, --null           --files-from lists are NUL-separated, and plain output\n"
         "                       lines end in NUL with paths written as they are\n"
         "      --exclude GLOB   leave out walked files and folders whose name or path\n"
         "                       below the walked directory matches GLOB (repeatable)\n"
         "      --no-ignore      also walk what .gitignore and .ignore files exclude\n"
         "\n"
         "Other:\n"
         "      --list-languages print the data file's languages and their extensions\n"
         "                       (one JSON object per language with --json), then exit\n"
         "  -j, --jobs N         worker threads (default: one per core)\n"
         "  -h, --help           show this help and exit\n"
         "      --version        show the version and exit\n"
         "\n"
         "Exit status: 0 if every file was read, 1 if some files could not be read\n"
         "or the output could not be written, 2 for a usage error or a data file that\n"
         "cannot be loaded.\n";
}

}  // namespace quillon::lingomat::cli
