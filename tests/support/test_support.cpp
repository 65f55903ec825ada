#include "test_support.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace quillon::lingomat::test_support {

namespace fs = std::filesystem;

TempFile::TempFile(const std::string& content) {
  std::string pattern = (fs::temp_directory_path() / "lingomat_test_XXXXXX").string();
  const int fd = mkstemp(pattern.data());
  if (fd < 0) throw std::runtime_error("mkstemp failed");
  close(fd);
  path_ = pattern;
  write_text(path_, content);
}

TempFile::~TempFile() { std::remove(path_.c_str()); }

TempDir::TempDir() {
  std::string pattern = (fs::temp_directory_path() / "lingomat-tools-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
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
  std::ostringstream content;
  content << stream.rdbuf();
  return content.str();
}

std::vector<std::string> list_folder(const std::string& path) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(path)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

CommandResult run_program(const std::string& program, const std::vector<std::string>& args) {
  TempDir capture;
  const std::string out_path = capture / "out";
  const std::string err_path = capture / "err";
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) {
    if (!freopen(out_path.c_str(), "w", stdout) || !freopen(err_path.c_str(), "w", stderr)) {
      _exit(127);
    }
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  int raw = 0;
  waitpid(child, &raw, 0);
  CommandResult result;
  result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  result.out = read_text(out_path);
  result.err = read_text(err_path);
  return result;
}

}  // namespace quillon::lingomat::test_support
