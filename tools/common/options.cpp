#include "common/options.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "common/help_layout.h"
#include "common/tool_error.h"

namespace quillon::lingomat::tools {

std::string OptionParser::format_default(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

OptionParser::OptionParser(std::string program, std::string summary)
    : program_(std::move(program)), summary_(std::move(summary)) {}

void OptionParser::add_section(const std::string& title) { section_ = title; }

void OptionParser::set_epilogue(std::string text) { epilogue_ = std::move(text); }

void OptionParser::add(const std::string& name, const std::string& metavar, const std::string& help,
                       std::function<void(const std::string&)> set) {
  options_.push_back({name, metavar, help, std::move(set), section_});
}

void OptionParser::add_flag(const std::string& name, const std::string& help, bool* target) {
  add(name, "", help, [target](const std::string&) { *target = true; });
}

namespace {

const std::string& non_empty(const std::string& option, const std::string& metavar,
                             const std::string& value) {
  if (value.empty()) throw UsageError("--" + option + ": " + metavar + " cannot be empty");
  return value;
}

}  // namespace

void OptionParser::add_string(const std::string& name, const std::string& metavar,
                              const std::string& help, std::string* target) {
  add(name, metavar, help, [name, metavar, target](const std::string& value) {
    *target = non_empty(name, metavar, value);
  });
}

void OptionParser::add_strings(const std::string& name, const std::string& metavar,
                               const std::string& help, std::vector<std::string>* target) {
  add(name, metavar, help, [name, metavar, target](const std::string& value) {
    target->push_back(non_empty(name, metavar, value));
  });
}

void OptionParser::add_uint(const std::string& name, const std::string& metavar,
                            const std::string& help, std::uint64_t* target, std::uint64_t min,
                            std::uint64_t max) {
  add(name, metavar, help, [name, target, min, max](const std::string& value) {
    *target = to_uint(name, value, min, max);
  });
}

void OptionParser::add_double(const std::string& name, const std::string& metavar,
                              const std::string& help, double* target) {
  add(name, metavar, help,
      [name, target](const std::string& value) { *target = to_double(name, value); });
}

void OptionParser::add_alias(char letter, const std::string& name) {
  if (Option* option = find(name)) option->alias = letter;
}

void OptionParser::add_positional(const std::string& metavar, const std::string& help,
                                  std::string* target) {
  positionals_.push_back({metavar, help, target});
}

void OptionParser::add_positionals(const std::string& metavar, const std::string& help,
                                   std::vector<std::string>* target) {
  rest_help_ = {metavar, help, nullptr};
  rest_ = target;
}

OptionParser::Option* OptionParser::find(const std::string& name) {
  for (Option& option : options_) {
    if (option.name == name) return &option;
  }
  return nullptr;
}

OptionParser::Option* OptionParser::find_alias(char letter) {
  for (Option& option : options_) {
    if (option.alias == letter) return &option;
  }
  return nullptr;
}

std::uint64_t OptionParser::to_uint(const std::string& option, const std::string& text,
                                    std::uint64_t min, std::uint64_t max) {
  const auto bad = [&](const std::string& why) {
    return UsageError("--" + option + ": " + why + ", got '" + text + "'");
  };
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
    throw bad("expected a whole number");
  }
  errno = 0;
  const unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);
  if (errno == ERANGE || value > max) {
    throw bad("expected at most " + std::to_string(max));
  }
  if (value < min) throw bad("expected at least " + std::to_string(min));
  return value;
}

double OptionParser::to_double(const std::string& option, const std::string& text) {
  char* end = nullptr;
  errno = 0;
  const double value = std::strtod(text.c_str(), &end);
  // strtod skips leading blanks, but a value with blanks in it is a typo.
  const bool blank_first = !text.empty() && std::isspace(static_cast<unsigned char>(text[0]));
  if (text.empty() || blank_first || *end != '\0' || errno == ERANGE || !std::isfinite(value)) {
    throw UsageError("--" + option + ": expected a number, got '" + text + "'");
  }
  return value;
}

void OptionParser::take_positional(const std::string& arg, std::size_t& next_positional) {
  if (next_positional < positionals_.size()) {
    *positionals_[next_positional++].target = arg;
  } else if (rest_ != nullptr) {
    rest_->push_back(arg);
  } else {
    throw UsageError("unexpected argument '" + arg + "'");
  }
}

bool OptionParser::parse(int argc, const char* const* argv) {
  std::size_t next_positional = 0;
  bool options_done = false;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    // "-" alone is an argument: standard input, by convention.
    if (options_done || arg.size() < 2 || arg[0] != '-') {
      take_positional(arg, next_positional);
      continue;
    }
    if (arg == "--") {
      options_done = true;
      continue;
    }
    if (arg == "--help" || arg == "-h") return false;
    if (arg == "--version") {
      version_asked_ = true;
      return false;
    }

    std::string name;
    std::string value;
    bool has_value = false;
    Option* option = nullptr;
    if (arg[1] != '-') {
      // "-o", or an alias with its value attached: "-j4".
      option = find_alias(arg[1]);
      if (option == nullptr || (arg.size() > 2 && option->metavar.empty())) {
        throw UsageError("unknown option '" + arg + "'");
      }
      if (arg.size() > 2) {
        value = arg.substr(2);
        has_value = true;
      }
      name = option->name;
    } else {
      name = arg.substr(2);
      const auto equals = name.find('=');
      if (equals != std::string::npos) {
        value = name.substr(equals + 1);
        name.erase(equals);
        has_value = true;
      }
      option = find(name);
      if (option == nullptr) throw UsageError("unknown option '--" + name + "'");
    }
    if (option->metavar.empty()) {
      if (has_value) throw UsageError("--" + name + " takes no value");
    } else if (!has_value) {
      if (i + 1 >= argc) throw UsageError("--" + name + " needs a value (" + option->metavar + ")");
      value = argv[++i];
    }
    option->set(value);
    given_.insert(name);
  }
  if (next_positional < positionals_.size()) {
    throw UsageError("missing argument " + positionals_[next_positional].metavar);
  }
  return true;
}

std::string OptionParser::help() const {
  std::string text = "Usage: " + program_ + " [options]";
  for (const Positional& positional : positionals_) text += " " + positional.metavar;
  if (rest_ != nullptr) text += " " + rest_help_.metavar;
  text += "\n" + summary_ + "\n";
  if (!positionals_.empty() || rest_ != nullptr) text += "\n";
  for (const Positional& positional : positionals_) {
    text += help_entry("  " + positional.metavar, positional.help);
  }
  if (rest_ != nullptr) text += help_entry("  " + rest_help_.metavar, rest_help_.help);
  std::string section;
  for (const Option& option : options_) {
    if (option.section != section) {
      section = option.section;
      text += "\n" + section + ":\n";
    }
    // Long names line up whether or not the option has a letter.
    std::string term = option.alias != 0 ? std::string("  -") + option.alias + ", " : "      ";
    term += "--" + option.name;
    if (!option.metavar.empty()) term += " " + option.metavar;
    text += help_entry(term, option.help);
  }
  if (options_.empty()) text += "\nOptions:\n";
  text += help_entry("  -h, --help", "Show this help and exit.");
  text += help_entry("      --version", "Show the version and exit.");
  if (!epilogue_.empty()) text += "\n" + epilogue_;
  return text;
}

std::string OptionParser::exit_text() const {
  return version_asked_ ? program_ + " " + LINGOMAT_VERSION + "\n" : help();
}

}  // namespace quillon::lingomat::tools
