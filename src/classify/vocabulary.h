#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillon::lingomat {

// A hash of a token's bytes, shared by every table that keys tokens by content.
std::uint64_t hash_token(std::string_view token);

// Every distinct token of the data file, stored once and numbered densely from 0. One flat
// byte arena and an open-addressing table keep creation fast and memory close to the bytes.
class Vocabulary {
 public:
  static constexpr std::uint32_t kAbsent = UINT32_MAX;

  // Room for `tokens` distinct tokens of `bytes` bytes in all, without growing anything.
  void reserve(std::size_t tokens, std::size_t bytes);
  // The id of `token`, adding it when it is new.
  std::uint32_t intern(std::string_view token) { return intern(token, hash_token(token)); }
  std::uint32_t intern(std::string_view token, std::uint64_t hash);
  // Starts loading the table slot of a token about to be interned.
  void prefetch(std::uint64_t hash) const { __builtin_prefetch(&slots_[probe_start(hash)]); }
  std::uint32_t find(std::string_view token) const { return find(token, hash_token(token)); }
  std::uint32_t find(std::string_view token, std::uint64_t hash) const;

  std::size_t size() const { return hashes_.size(); }
  std::string_view token(std::uint32_t id) const;
  // Releases the room reserved beyond the tokens that came.
  void shrink_to_fit();

 private:
  std::size_t probe_start(std::uint64_t hash) const { return hash & (slots_.size() - 1); }
  void rebuild(std::size_t slot_count);

  std::string bytes_;
  std::vector<std::uint64_t> ends_;    // token id -> end of its bytes in bytes_
  std::vector<std::uint32_t> hashes_;  // token id -> low bits of its hash, to skip compares
  std::vector<std::uint32_t> slots_{std::vector<std::uint32_t>(16, kAbsent)};  // power of two
};

}  // namespace quillon::lingomat
