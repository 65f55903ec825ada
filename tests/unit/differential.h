#pragma once

// The engine against the straightforward implementation kept in tests/reference: the same
// tokens, the same answers and the same rankings, scores compared bit for bit.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "reference_engine.h"

namespace quillon::lingomat {

// The names and the bits of the scores (NaN included), so that rankings compare exactly.
inline std::vector<std::pair<std::string, std::uint64_t>> exactly(const Ranking& ranking) {
  std::vector<std::pair<std::string, std::uint64_t>> result;
  for (const auto& [name, score] : ranking) {
    std::uint64_t bits;
    std::memcpy(&bits, &score, sizeof bits);
    result.emplace_back(name, bits);
  }
  return result;
}

struct EnginePair {
  std::unique_ptr<Lingomat> engine;
  std::unique_ptr<reference::Engine> expected;
};

inline EnginePair make_pair(const std::string& data_file, std::uint64_t max_bytes,
                            std::uint64_t max_tokens, std::uint64_t min_tokens, double floor,
                            const std::vector<std::string>& restrictions = {}) {
  const Lingomat::Opts opts{
      {max_bytes, max_tokens}, {data_file, min_tokens, 0, floor}, restrictions};
  return {std::make_unique<Lingomat>(opts),
          std::make_unique<reference::Engine>(reference::EngineOpts{
              {max_bytes, max_tokens}, data_file, min_tokens, floor, restrictions})};
}

// Tokens, interpreter, answers with and without a name, and the ranking among every language.
inline void expect_same(const EnginePair& pair, const std::string& name, const std::string& text) {
  const auto& limits = pair.engine->opts().tokenizer;
  ASSERT_EQ(pair.engine->tokenizer().extract_tokens(text),
            reference::extract_tokens(text, {limits.max_bytes, limits.max_tokens}))
      << name;
  EXPECT_EQ(pair.engine->tokenizer().extract_shebang(text), reference::extract_shebang(text));
  EXPECT_EQ(pair.engine->identify("", text), pair.expected->identify("", text)) << name;
  EXPECT_EQ(pair.engine->identify(name, text), pair.expected->identify(name, text)) << name;
  EXPECT_EQ(exactly(pair.engine->identify_by_classifier(text, {})),
            exactly(pair.expected->identify_by_classifier(text, {})))
      << name;
}

}  // namespace quillon::lingomat
