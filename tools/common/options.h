#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace quillon::lingomat::tools {

// The command-line parser every tool uses: long options ("--name value" or "--name=value"),
// single-letter aliases ("-o value", "-j4", "-0"), flags, repeatable options, named
// positional arguments and a trailing list of them. A value may start with '-'
// ("--min-score -6"); "--" ends the options. Every problem is a UsageError that names
// the option.
class OptionParser {
 public:
  // `summary` is printed under the usage line as it is written: its first line is what
  // the tool does, paragraphs after a blank line may follow.
  OptionParser(std::string program, std::string summary);

  // Options added after this are listed under the heading `title` (default "Options").
  void add_section(const std::string& title);
  // Printed at the end of the help, as it is written.
  void set_epilogue(std::string text);

  void add_flag(const std::string& name, const std::string& help, bool* target);
  // An empty value is refused: no option here means anything by it.
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
  // Every argument after the named positionals, none or many; the tool decides how many it
  // needs.
  void add_positionals(const std::string& metavar, const std::string& help,
                       std::vector<std::string>* target);

  // False when --help or --version was asked for (the caller prints exit_text() and exits 0).
  bool parse(int argc, const char* const* argv);
  bool given(const std::string& name) const { return given_.count(name) > 0; }
  // After parse() returned false: --version rather than --help.
  bool version_asked() const { return version_asked_; }
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
    std::string section;
    char alias = 0;
  };
  struct Positional {
    std::string metavar;
    std::string help;
    std::string* target;
  };

  Option* find(const std::string& name);
  Option* find_alias(char letter);
  void add(const std::string& name, const std::string& metavar, const std::string& help,
           std::function<void(const std::string&)> set);
  void take_positional(const std::string& arg, std::size_t& next_positional);

  std::string program_;
  std::string summary_;
  std::string epilogue_;
  std::string section_ = "Options";
  std::vector<Option> options_;
  std::vector<Positional> positionals_;
  Positional rest_help_{};                    // the trailing list's name and help
  std::vector<std::string>* rest_ = nullptr;  // null: the tool takes no trailing list
  std::set<std::string> given_;
  bool version_asked_ = false;
};

}  // namespace quillon::lingomat::tools
