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

// Equal names in equal order, and scores with equal bits (NaN included).
inline ::testing::AssertionResult same_ranking(const Ranking& actual,
                                               const reference::Ranking& expected) {
  if (actual.size() != expected.size()) {
    return ::testing::AssertionFailure()
           << actual.size() << " entries instead of " << expected.size();
  }
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (actual[i].first != expected[i].first ||
        std::memcmp(&actual[i].second, &expected[i].second, sizeof(double)) != 0) {
      return ::testing::AssertionFailure()
             << "entry " << i << ": " << actual[i].first << " " << actual[i].second
             << " instead of " << expected[i].first << " " << expected[i].second;
    }
  }
  return ::testing::AssertionSuccess();
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
  EXPECT_TRUE(same_ranking(pair.engine->identify_by_classifier(text, {}),
                           pair.expected->identify_by_classifier(text, {})))
      << name;
}

}  // namespace quillon::lingomat
