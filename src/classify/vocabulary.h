#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/token_hash.h"

namespace quillon::lingomat {

// Every distinct token of the data file, stored once and numbered densely from 0. One flat
// byte arena and an open-addressing table keep creation fast and memory close to the bytes.
class Vocabulary {
 public:
  static constexpr std::uint32_t kAbsent = UINT32_MAX;
  // Slots one insertion may step over before the table stops trusting its fast hash: far
  // beyond what a half-full table of honest tokens needs, far below what a flood costs.
  static constexpr std::size_t kMaxProbe = 128;

  // The hash every table keyed by this vocabulary's tokens must use.
  std::uint64_t hash(std::string_view token) const { return hasher_(token); }
  const TokenHasher& hasher() const { return hasher_; }

  // Room for `tokens` distinct tokens of `bytes` bytes in all, without growing anything.
  void reserve(std::size_t tokens, std::size_t bytes);
  // The id of `token`, adding it when it is new. `hash` must be hash(token) as it is now:
  // interning may change the hash function, so callers hash just before interning.
  std::uint32_t intern(std::string_view token) { return intern(token, hash(token)); }
  std::uint32_t intern(std::string_view token, std::uint64_t hash);
  // Starts loading the table slot of a token about to be interned.
  void prefetch(std::uint64_t hash) const { __builtin_prefetch(&slots_[probe_start(hash)]); }
  // Once the slot is loaded: starts loading the entry it names, and once that is loaded, the
  // entry's bytes, which interning compares with the token.
  void prefetch_entry(std::uint64_t hash) const;
  void prefetch_bytes(std::uint64_t hash) const;
  std::uint32_t find(std::string_view token) const { return find(token, hash(token)); }
  std::uint32_t find(std::string_view token, std::uint64_t hash) const;

  std::size_t size() const { return hashes_.size(); }
  std::string_view token(std::uint32_t id) const;
  // The length of the longest token: anything longer cannot be found.
  std::size_t longest() const { return longest_; }
  // Releases the room reserved beyond the tokens that came, and builds the filter that
  // turns most look-ups of unknown tokens away before they reach the table.
  void shrink_to_fit();

 private:
  std::size_t probe_start(std::uint64_t hash) const { return hash & (slots_.size() - 1); }
  void rebuild(std::size_t slot_count);
  // Rehashes every token with the keyed hash, after an insertion probed too far.
  void switch_to_keyed_hash();

  TokenHasher hasher_;
  std::size_t longest_ = 0;
  std::string bytes_;
  std::vector<std::uint64_t> ends_;    // token id -> end of its bytes in bytes_
  std::vector<std::uint32_t> hashes_;  // token id -> low bits of its hash, to skip compares
  std::vector<std::uint32_t> slots_{std::vector<std::uint32_t>(16, kAbsent)};  // power of two
  // One bit per filter position, set where some token's hash lands: a clear bit proves a
  // token unknown from one small, cache-friendly read. Empty until shrink_to_fit().
  std::vector<std::uint64_t> filter_;
  std::uint32_t filter_mask_ = 0;
};

}  // namespace quillon::lingomat
