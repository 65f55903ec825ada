#pragma once

#include <string>
#include <vector>

// What the tests of every group share: temporary files and folders, and running a program.
namespace quillon::lingomat::test_support {

// A file with the given content under the system's temporary folder, removed with the object.
class TempFile {
 public:
  explicit TempFile(const std::string& content);
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& relative) const { return path_ + "/" + relative; }

 private:
  std::string path_;
};

void write_text(const std::string& path, const std::string& content);  // makes the folders
std::string read_text(const std::string& path);
std::vector<std::string> list_folder(const std::string& path);  // the names in it, sorted

struct CommandResult {
  int status = -1;  // the exit status, or -1 when the program did not exit normally
  int signal = 0;   // the signal that ended it, if one did
  std::string out;  // empty when standard output went to a file
  std::string err;
};

struct RunOptions {
  std::string stdin_text;   // what the program reads on standard input
  std::string stdout_path;  // where its standard output goes; empty: into CommandResult::out
};

// Runs `program` with `args` (no shell) and waits for it; throws when it cannot start.
CommandResult run_program(const std::string& program, const std::vector<std::string>& args,
                          const RunOptions& options = {});

}  // namespace quillon::lingomat::test_support
