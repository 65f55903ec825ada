// libFuzzer target: arbitrary bytes as a file name and a text must never crash the engine.
// The first line of the input (up to 64 bytes) is the file name, the rest the text.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "engine/engine.h"

namespace {

using quillon::lingomat::Lingomat;
using quillon::lingomat::Tokenizer;

const Lingomat& engine() {
  static const std::unique_ptr<Lingomat> instance = [] {
    Lingomat::Opts opts;
    opts.classifier.data_file = LINGOMAT_FUZZ_DATA;
    opts.classifier.min_tokens = 1;
    quillon::lingomat::EngineCreation created = quillon::lingomat::create_engine(opts);
    if (created.engine == nullptr) {
      std::fprintf(stderr, "no engine: %s\n", created.reason.c_str());
      std::abort();
    }
    return std::move(created.engine);
  }();
  return *instance;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t line_end = input.find('\n');
  const std::size_t name_length =
      line_end == std::string::npos ? 0 : std::min<std::size_t>(line_end, 64);
  const std::string file_name = input.substr(0, name_length);
  const std::string text = input.substr(name_length);

  engine().identify(file_name, text);
  // The tokenizer without limits reads every byte.
  static const Tokenizer unlimited(Tokenizer::Opts{0, 0});
  unlimited.extract_tokens(text);
  return 0;
}
