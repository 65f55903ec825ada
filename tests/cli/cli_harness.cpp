#include "cli_harness.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "test_support.h"

namespace lingomat_cli_test {

namespace test_support = quillon::lingomat::test_support;

namespace fs = std::filesystem;

namespace {

constexpr const char* kTinyData = R"json({
  "filenames": {"Alpha": ["Alphafile"]},
  "extnames": {"Alpha": [".al"], "Beta": [".be", ".al"]},
  "interpreters": {"Beta": ["betash"]},
  "languages": {"Alpha": 1, "Beta": 1},
  "language_tokens": {"Alpha": 100, "Beta": 100},
  "tokens": {"Alpha": {"alpha": 80, "(": 10, ")": 10},
             "Beta": {"beta": 80, "{": 10, "}": 10}},
  "tokens_total": 200,
  "languages_total": 2
})json";

}  // namespace

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

void CliTest::SetUp() {
  std::string pattern = (fs::temp_directory_path() / "lingomat-cli-XXXXXX").string();
  ASSERT_NE(mkdtemp(pattern.data()), nullptr);
  root_ = pattern;
  fs::create_directory(path("io"));
  data_file_ = write_file("io/data.json", kTinyData);
}

void CliTest::TearDown() {
  std::error_code ignored;
  fs::permissions(root_, fs::perms::owner_all, fs::perm_options::add, ignored);
  fs::remove_all(root_, ignored);
}

std::string CliTest::path(const std::string& relative) const { return root_ + "/" + relative; }

std::string CliTest::write_file(const std::string& relative, const std::string& content) {
  const std::string file = path(relative);
  fs::create_directories(fs::path(file).parent_path());
  std::ofstream(file, std::ios::binary) << content;
  return file;
}

CliRun CliTest::run(const std::vector<std::string>& args, const std::string& stdin_text) const {
  return run_program(LINGOMAT_CLI_BINARY, args, stdin_text);
}

CliRun CliTest::run_program(const std::string& program, const std::vector<std::string>& args,
                            const std::string& stdin_text, const std::string& stdout_path) const {
  const test_support::CommandResult ran =
      test_support::run_program(program, args, {stdin_text, stdout_path});
  CliRun result;
  // As a shell reports it: 128 plus the signal that ended the program.
  result.exit_code = ran.signal != 0 ? 128 + ran.signal : ran.status;
  result.out = ran.out;
  result.err = ran.err;
  return result;
}

CliRun CliTest::run_with_data(std::vector<std::string> args, const std::string& stdin_text) const {
  // The library's floors, so that short or poorly fitting texts get no classifier answer;
  // options given later override them.
  args.insert(args.begin(), {"--data", data_file_, "--min-tokens", "40", "--min-score", "-8"});
  return run(args, stdin_text);
}

CliRun CliTest::run_with_tool_defaults(std::vector<std::string> args) const {
  args.insert(args.begin(), {"--data", data_file_});
  return run(args, "");
}

std::string CliTest::words(const std::string& word, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += word + " ";
  return text;
}

}  // namespace lingomat_cli_test
