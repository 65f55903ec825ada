#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace quillon::lingomat::tools {

// A small command-line parser: long options ("--name value" or "--name=value"),
// flags, repeatable options and named positional arguments. Every problem is
// a UsageError that names the option.
class OptionParser {
 public:
  OptionParser(std::string program, std::string summary);

  void add_flag(const std::string& name, const std::string& help, bool* target);
  void add_string(const std::string& name, const std::string& metavar, const std::string& help,
                  std::string* target);
  // May be given several times; every value is appended.
  void add_strings(const std::string& name, const std::string& metavar, const std::string& help,
                   std::vector<std::string>* target);
  void add_uint(const std::string& name, const std::string& metavar, const std::string& help,
                std::uint64_t* target, std::uint64_t min = 0, std::uint64_t max = UINT64_MAX);
  void add_double(const std::string& name, const std::string& metavar, const std::string& help,
                  double* target);
  // A single-letter alias ("-o") of an option added before.
  void add_alias(char letter, const std::string& name);
  // Positional arguments are required and taken in the order they were added.
  void add_positional(const std::string& metavar, const std::string& help, std::string* target);

  // False when --help or --version was asked for (the caller prints exit_text() and exits 0).
  bool parse(int argc, const char* const* argv);
  bool given(const std::string& name) const { return given_.count(name) > 0; }
  std::string help() const;
  // What the option that ended parse() early asks to print: the help or the version line.
  std::string exit_text() const;

  // Strict conversions used by the typed options, public for reuse.
  static std::uint64_t to_uint(const std::string& option, const std::string& text,
                               std::uint64_t min, std::uint64_t max);
  static double to_double(const std::string& option, const std::string& text);
  // A number as help texts show a default: "-8", "0.5".
  static std::string format_default(double value);

 private:
  struct Option {
    std::string name;
    std::string metavar;  // empty for a flag
    std::string help;
    std::function<void(const std::string&)> set;
    char alias = 0;
  };
  struct Positional {
    std::string metavar;
    std::string help;
    std::string* target;
  };

  Option* find(const std::string& name);
  void add(Option option);

  std::string program_;
  std::string summary_;
  std::vector<Option> options_;
  std::vector<Positional> positionals_;
  std::set<std::string> given_;
  bool version_asked_ = false;
};

}  // namespace quillon::lingomat::tools
