// libFuzzer target for inputs far longer than libFuzzer's own: the input is a recipe, its
// first two bytes a repeat count and the rest a piece that is repeated up to 4 MiB, so that
// shapes whose cost grows with length (one huge tag, unclosed comments, long #! lines,
// colliding tokens) are explored at the sizes where a quadratic corner would show. Each text
// is identified with the default limits and with none; -timeout turns a slow one into a
// finding.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "engine/engine.h"

namespace {

using quillon::lingomat::Lingomat;

constexpr std::size_t kMaxText = std::size_t{4} << 20;

std::unique_ptr<Lingomat> make_engine(std::uint64_t max_bytes, std::uint64_t max_tokens) {
  Lingomat::Opts opts;
  opts.classifier.data_file = LINGOMAT_FUZZ_DATA;
  opts.classifier.min_tokens = 1;
  opts.tokenizer.max_bytes = max_bytes;
  opts.tokenizer.max_tokens = max_tokens;
  quillon::lingomat::EngineCreation created = quillon::lingomat::create_engine(opts);
  if (created.engine == nullptr) {
    std::fprintf(stderr, "no engine: %s\n", created.reason.c_str());
    std::abort();
  }
  return std::move(created.engine);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::unique_ptr<Lingomat> with_limits = make_engine(10240, 500);
  static const std::unique_ptr<Lingomat> unlimited = make_engine(0, 0);
  if (size < 3) return 0;
  const std::size_t repeats = (std::size_t{data[0]} << 8 | data[1]) + 1;
  const std::string piece(reinterpret_cast<const char*>(data) + 2, size - 2);
  std::string text;
  text.reserve(std::min(kMaxText, piece.size() * repeats));
  for (std::size_t i = 0; i < repeats && text.size() + piece.size() <= kMaxText; ++i) {
    text += piece;
  }
  with_limits->identify("", text);
  unlimited->identify("", text);
  return 0;
}
