#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillon::lingomat {

// The slots of an open-addressed table for entries 0..n-1, where hashes[i] holds the low bits
// of entry i's hash: each index sits at the first free slot from its hash, probing linearly.
// `slot_count` must be a power of two larger than n; free slots hold `empty`.
inline std::vector<std::uint32_t> hash_slots(const std::vector<std::uint32_t>& hashes,
                                             std::size_t slot_count, std::uint32_t empty) {
  std::vector<std::uint32_t> slots(slot_count, empty);
  const std::size_t mask = slot_count - 1;
  for (std::uint32_t index = 0; index < hashes.size(); ++index) {
    std::size_t slot = hashes[index] & mask;
    while (slots[slot] != empty) slot = (slot + 1) & mask;
    slots[slot] = index;
  }
  return slots;
}

}  // namespace quillon::lingomat
