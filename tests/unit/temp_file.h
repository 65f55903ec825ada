#pragma once

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace quillon::lingomat::testing {

// A file with the given content that is removed when the object goes away.
class TempFile {
 public:
  explicit TempFile(const std::string& content) {
    char name[] = "/tmp/lingomat_test_XXXXXX";
    const int fd = mkstemp(name);
    if (fd >= 0) close(fd);
    path_ = name;
    std::ofstream(path_, std::ios::binary) << content;
  }
  ~TempFile() { std::remove(path_.c_str()); }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace quillon::lingomat::testing
