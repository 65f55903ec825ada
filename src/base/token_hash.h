#pragma once

#include <cstdint>
#include <string_view>

namespace quillon::lingomat {

// Hashes the tokens of tables built from text or data the library does not control. The
// fast mode is a multiply-rotate hash with a random seed: cheap for the short tokens that
// are hashed at every position, and enough against inputs that merely happen to collide.
// Inputs crafted to collide whatever the seed can only be met by a keyed pseudo-random
// function, so a table that sees its probes grow long switches to SipHash-1-3 with a
// random 128-bit key.
class TokenHasher {
 public:
  enum class Mode { kFast, kKeyed };

  // A fresh random seed and key: no two hashers (and no two runs) agree.
  TokenHasher();

  std::uint64_t operator()(std::string_view token) const {
    return mode_ == Mode::kFast ? fast(token) : keyed(token);
  }
  Mode mode() const { return mode_; }
  void use_keyed() { mode_ = Mode::kKeyed; }

 private:
  std::uint64_t fast(std::string_view token) const;
  std::uint64_t keyed(std::string_view token) const;

  Mode mode_ = Mode::kFast;
  std::uint64_t seed_;
  std::uint64_t key_[2];
};

// SipHash-1-3 of `bytes` under a 128-bit key; SipHash-2-4 is the same function with more
// rounds, kept so that the shared code can be checked against the published test vectors.
std::uint64_t siphash13(std::string_view bytes, const std::uint64_t key[2]);
std::uint64_t siphash24(std::string_view bytes, const std::uint64_t key[2]);

// Functor for standard unordered containers keyed by names from a data file: a random key
// per instance, so no file can make their buckets degenerate.
class KeyedStringHash {
 public:
  KeyedStringHash();
  std::size_t operator()(std::string_view text) const {
    return static_cast<std::size_t>(siphash13(text, key_));
  }

 private:
  std::uint64_t key_[2];
};

}  // namespace quillon::lingomat
