#include "test_support.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

extern char** environ;

namespace quillon::lingomat::test_support {

namespace fs = std::filesystem;

TempFile::TempFile(const std::string& content)
    : path_((fs::temp_directory_path() / "lingomat_test_XXXXXX").string()) {
  const int fd = mkstemp(path_.data());
  if (fd < 0) throw std::runtime_error("mkstemp failed");
  close(fd);
  write_text(path_, content);
}

TempFile::~TempFile() { std::remove(path_.c_str()); }

TempDir::TempDir() : path_((fs::temp_directory_path() / "lingomat-tools-XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
}

TempDir::~TempDir() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void write_text(const std::string& path, const std::string& content) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream stream(path, std::ios::binary);
  stream << content;
  if (!stream) throw std::runtime_error("cannot write " + path);
}

std::string read_text(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + path);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::vector<std::string> list_folder(const std::string& path) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(path)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

CommandResult run_program(const std::string& program, const std::vector<std::string>& args,
                          const RunOptions& options) {
  TempDir capture;
  const std::string in_path = capture / "in";
  const std::string out_path = options.stdout_path.empty() ? capture / "out" : options.stdout_path;
  const std::string err_path = capture / "err";
  write_text(in_path, options.stdin_text);

  std::vector<std::string> argv_strings{program};
  argv_strings.insert(argv_strings.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& arg : argv_strings) argv.push_back(arg.data());
  argv.push_back(nullptr);

  // posix_spawn rather than fork: the test programs may have threads running.
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, in_path.c_str(), O_RDONLY, 0);
  const int create = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_addopen(&actions, 1, out_path.c_str(), create, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, err_path.c_str(), create, 0600);
  pid_t child = 0;
  const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) throw std::runtime_error("cannot start " + program);

  int raw = 0;
  waitpid(child, &raw, 0);
  CommandResult result;
  result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  result.signal = WIFSIGNALED(raw) ? WTERMSIG(raw) : 0;
  if (options.stdout_path.empty()) result.out = read_text(out_path);
  result.err = read_text(err_path);
  return result;
}

}  // namespace quillon::lingomat::test_support
