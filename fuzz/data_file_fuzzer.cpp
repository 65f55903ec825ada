// libFuzzer target: an arbitrary data file must either build an engine or be refused with
// one of the statuses a bad data file deserves, never crash.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>

#include "engine/engine.h"

namespace {

// One scratch file for the whole run, in $TMPDIR (default /tmp), made by mkstemp
// so that parallel fuzzing jobs and other users cannot collide with it.
class ScratchFile {
 public:
  ScratchFile() {
    const char* dir = std::getenv("TMPDIR");
    std::string pattern =
        std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/lingomat_fuzz_XXXXXX";
    const int fd = mkstemp(pattern.data());
    if (fd < 0) {
      std::perror(pattern.c_str());
      std::abort();
    }
    close(fd);
    path_ = pattern;
  }
  ~ScratchFile() { unlink(path_.c_str()); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ScratchFile scratch;
  const std::string& path = scratch.path();
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  quillon::lingomat::Lingomat::Opts opts;
  opts.classifier.data_file = path;
  opts.classifier.min_tokens = 0;
  const quillon::lingomat::EngineCreation created = quillon::lingomat::create_engine(opts);
  if (created.engine == nullptr) {
    // Refusing the file for its content, its size or lack of memory is fine; any other
    // failure is a bug.
    const int status = created.status;
    if (status != LINGOMAT_ERROR_JSON && status != LINGOMAT_ERROR_FILE_IO &&
        status != LINGOMAT_ERROR_MEMORY) {
      std::abort();
    }
    return 0;
  }
  try {
    created.engine->identify("a.c", "int main(void) { return 0; } <a href=x> #!/bin/sh");
  } catch (const std::bad_alloc&) {
  }
  return 0;
}
