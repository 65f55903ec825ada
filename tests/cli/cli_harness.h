#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace lingomat_cli_test {

struct CliRun {
  int exit_code = -1;
  std::string out;
  std::string err;
};

// The lines of `text`, without their line feeds.
std::vector<std::string> lines_of(const std::string& text);

// A scratch directory with a tiny data file, torn down after each test.
//
// The data knows two languages: Alpha (token "alpha", ".al", file "Alphafile")
// and Beta (token "beta", ".be" and also ".al", interpreter "betash").
class CliTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Creates a file (and its folders) below the scratch directory; returns its path.
  std::string write_file(const std::string& relative, const std::string& content);
  std::string path(const std::string& relative) const;

  // Runs the built tool with `args`, feeding `stdin_text` on standard input.
  CliRun run(const std::vector<std::string>& args, const std::string& stdin_text = "") const;
  // The same for a copy of the tool elsewhere; standard output goes to
  // `stdout_path` when one is given (CliRun::out then stays empty).
  CliRun run_program(const std::string& program, const std::vector<std::string>& args,
                     const std::string& stdin_text = "", const std::string& stdout_path = "") const;
  // The same with "--data <tiny data file>" and the library's classifier floors in front.
  CliRun run_with_data(std::vector<std::string> args, const std::string& stdin_text = "") const;
  // With the test data file and the tool's own defaults.
  CliRun run_with_tool_defaults(std::vector<std::string> args) const;

  // `count` repetitions of "word ", enough tokens for the classifier when count >= 40.
  static std::string words(const std::string& word, int count);

  std::string root_;
  std::string data_file_;
};

}  // namespace lingomat_cli_test
