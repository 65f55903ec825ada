#include "classify/vocabulary.h"

#include <cstring>

#include "classify/hash_slots.h"

namespace quillon::lingomat {

std::uint64_t hash_token(std::string_view token) {
  // Eight bytes at a time, multiply-and-rotate mixing: tokens are short and hashed often.
  constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15ull;
  std::uint64_t hash = 0xCBF29CE484222325ull ^ token.size();
  const char* p = token.data();
  std::size_t left = token.size();
  for (; left >= 8; left -= 8, p += 8) {
    std::uint64_t chunk;
    std::memcpy(&chunk, p, 8);
    hash = ((hash ^ chunk) * kMultiplier);
    hash ^= hash >> 29;
  }
  if (left > 0) {
    std::uint64_t chunk = 0;
    std::memcpy(&chunk, p, left);
    hash = ((hash ^ chunk) * kMultiplier);
  }
  hash ^= hash >> 32;
  hash *= kMultiplier;
  return hash ^ (hash >> 29);
}

std::string_view Vocabulary::token(std::uint32_t id) const {
  const std::uint64_t begin = id == 0 ? 0 : ends_[id - 1];
  return std::string_view(bytes_).substr(begin, ends_[id] - begin);
}

std::uint32_t Vocabulary::find(std::string_view token, std::uint64_t hash) const {
  const std::uint32_t short_hash = static_cast<std::uint32_t>(hash);
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t slot = probe_start(hash);; slot = (slot + 1) & mask) {
    const std::uint32_t id = slots_[slot];
    if (id == kAbsent) return kAbsent;
    if (hashes_[id] == short_hash && this->token(id) == token) return id;
  }
}

std::uint32_t Vocabulary::intern(std::string_view token, std::uint64_t hash) {
  const std::uint32_t short_hash = static_cast<std::uint32_t>(hash);
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = probe_start(hash);
  for (;; slot = (slot + 1) & mask) {
    const std::uint32_t id = slots_[slot];
    if (id == kAbsent) break;
    if (hashes_[id] == short_hash && this->token(id) == token) return id;
  }
  const auto id = static_cast<std::uint32_t>(hashes_.size());
  bytes_.append(token.data(), token.size());
  ends_.push_back(bytes_.size());
  hashes_.push_back(short_hash);
  slots_[slot] = id;
  // Keep probes short: at most half full.
  if (hashes_.size() * 2 > slots_.size()) rebuild(slots_.size() * 2);
  return id;
}

void Vocabulary::reserve(std::size_t tokens, std::size_t bytes) {
  bytes_.reserve(bytes);
  ends_.reserve(tokens);
  hashes_.reserve(tokens);
  std::size_t slot_count = slots_.size();
  while (slot_count < tokens * 2) slot_count *= 2;
  if (slot_count != slots_.size()) rebuild(slot_count);
}

void Vocabulary::rebuild(std::size_t slot_count) {
  slots_ = hash_slots(hashes_, slot_count, kAbsent);
}

void Vocabulary::shrink_to_fit() {
  std::size_t slot_count = 16;
  while (slot_count < hashes_.size() * 2) slot_count *= 2;
  if (slot_count < slots_.size()) rebuild(slot_count);
  bytes_.shrink_to_fit();
  ends_.shrink_to_fit();
  hashes_.shrink_to_fit();
}

}  // namespace quillon::lingomat
