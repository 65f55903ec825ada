#pragma once

#include <cstdint>

// The engine's default options, in one place: the C interface's defaults, the options
// records, the tools and the tests all start from these.
namespace quillon::lingomat::defaults {

// Tokens start only below this byte offset of a text.
inline constexpr std::uint64_t kMaxBytes = 10240;
// No tokenizing step starts once this many tokens exist.
inline constexpr std::uint64_t kMaxTokens = 500;
// Fewer tokens than this give no classifier answer.
inline constexpr std::uint64_t kMinTokens = 40;
// Classifier answers scoring below this per token are dropped; 0 switches the floor off.
inline constexpr double kMinScorePerToken = -8.0;

}  // namespace quillon::lingomat::defaults
