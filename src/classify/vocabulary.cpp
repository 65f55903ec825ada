#include "classify/vocabulary.h"

#include <algorithm>

#include "classify/hash_slots.h"

namespace quillon::lingomat {

std::string_view Vocabulary::token(std::uint32_t id) const {
  const std::uint64_t begin = id == 0 ? 0 : ends_[id - 1];
  return std::string_view(bytes_).substr(begin, ends_[id] - begin);
}

namespace {

// The filter position of a token: hash bits mostly above those that pick its table slot.
std::uint32_t filter_position(std::uint32_t short_hash, std::uint32_t mask) {
  return (short_hash >> 10) & mask;
}

// Releases a container's room beyond its content, when there is much of it: a little is
// cheaper kept than copied away. Unlike the standard shrink_to_fit, which quietly keeps the
// room when the smaller copy cannot be allocated, this reports the failure.
template <typename Container>
void release_room(Container& container) {
  if (container.capacity() - container.size() > container.size() / 4) {
    Container(container.begin(), container.end()).swap(container);
  }
}

}  // namespace

std::uint32_t Vocabulary::find(std::string_view token, std::uint64_t hash) const {
  const std::uint32_t short_hash = static_cast<std::uint32_t>(hash);
  if (!filter_.empty()) {
    const std::uint32_t bit = filter_position(short_hash, filter_mask_);
    if ((filter_[bit / 64] >> (bit % 64) & 1) == 0) return kAbsent;
  }
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t slot = probe_start(hash);; slot = (slot + 1) & mask) {
    const std::uint32_t id = slots_[slot];
    if (id == kAbsent) return kAbsent;
    if (hashes_[id] == short_hash && this->token(id) == token) return id;
  }
}

void Vocabulary::prefetch_entry(std::uint64_t hash) const {
  const std::uint32_t id = slots_[probe_start(hash)];
  if (id == kAbsent) return;
  __builtin_prefetch(&hashes_[id]);
  __builtin_prefetch(&ends_[id]);
  if (id != 0) __builtin_prefetch(&ends_[id - 1]);
}

void Vocabulary::prefetch_bytes(std::uint64_t hash) const {
  const std::uint32_t id = slots_[probe_start(hash)];
  if (id == kAbsent) return;
  __builtin_prefetch(bytes_.data() + (id == 0 ? 0 : ends_[id - 1]));
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
  filter_.clear();  // built again by shrink_to_fit()
  const auto id = static_cast<std::uint32_t>(hashes_.size());
  bytes_.append(token.data(), token.size());
  ends_.push_back(bytes_.size());
  hashes_.push_back(short_hash);
  slots_[slot] = id;
  longest_ = std::max(longest_, token.size());
  const std::size_t probed = (slot - probe_start(hash)) & mask;
  if (probed > kMaxProbe && hasher_.mode() == TokenHasher::Mode::kFast) {
    switch_to_keyed_hash();
  } else if (hashes_.size() * 2 > slots_.size()) {
    rebuild(slots_.size() * 2);  // keep probes short: at most half full
  }
  return id;
}

void Vocabulary::switch_to_keyed_hash() {
  hasher_.use_keyed();
  for (std::uint32_t id = 0; id < hashes_.size(); ++id) {
    hashes_[id] = static_cast<std::uint32_t>(hasher_(token(id)));
  }
  std::size_t slot_count = std::max<std::size_t>(slots_.size(), 16);
  while (slot_count < hashes_.size() * 2) slot_count *= 2;
  rebuild(slot_count);
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
  release_room(bytes_);
  release_room(ends_);
  release_room(hashes_);

  // About sixteen bits per token: one unknown token in fifteen passes the filter.
  std::size_t bits = 64;
  while (bits < hashes_.size() * 16 && bits < (std::size_t{1} << 22)) bits *= 2;
  filter_.assign(bits / 64, 0);
  filter_mask_ = static_cast<std::uint32_t>(bits - 1);
  for (const std::uint32_t short_hash : hashes_) {
    const std::uint32_t bit = filter_position(short_hash, filter_mask_);
    filter_[bit / 64] |= std::uint64_t{1} << (bit % 64);
  }
}

}  // namespace quillon::lingomat
