#include "cli_harness.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace lingomat_cli_test {

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

std::string read_whole(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

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
  const std::string in_file = path("io/stdin");
  const std::string out_file = stdout_path.empty() ? path("io/stdout") : stdout_path;
  const std::string err_file = path("io/stderr");
  std::ofstream(in_file, std::ios::binary) << stdin_text;

  std::vector<std::string> argv_strings{program};
  argv_strings.insert(argv_strings.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& arg : argv_strings) argv.push_back(arg.data());
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, in_file.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, out_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  posix_spawn_file_actions_addopen(&actions, 2, err_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);

  CliRun result;
  if (spawned != 0) {
    ADD_FAILURE() << "cannot start " << argv[0];
    return result;
  }
  int status = 0;
  waitpid(pid, &status, 0);
  result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  if (stdout_path.empty()) result.out = read_whole(out_file);
  result.err = read_whole(err_file);
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
