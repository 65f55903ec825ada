// libFuzzer target: an arbitrary data file must either build an engine or raise one of the
// exceptions the C interface maps, never crash.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <ios>
#include <new>
#include <stdexcept>
#include <string>

#include "engine/lingomat.h"
#include "json/json_exception.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = "/tmp/lingomat_fuzz_" + std::to_string(getpid()) + ".json";
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  quillon::lingomat::Lingomat::Opts opts;
  opts.classifier.data_file = path;
  opts.classifier.min_tokens = 0;
  try {
    const quillon::lingomat::Lingomat engine(opts);
    engine.identify("a.c", "int main(void) { return 0; } <a href=x> #!/bin/sh");
  } catch (const quillon::lingomat::JsonException&) {
  } catch (const std::bad_alloc&) {
  } catch (const std::ios_base::failure&) {
  }
  return 0;
}
