#include "classify/text_tokens.h"

#include "classify/hash_slots.h"

namespace quillon::lingomat {
namespace {
constexpr std::uint32_t kEmpty = UINT32_MAX;
}  // namespace

std::uint32_t TextTokens::distinct_index(std::string_view token, bool& is_new) {
  // Runs of one token (a tag repeating an attribute) skip the hashing.
  if (!positions_.empty() && distinct_[positions_.back()] == token) {
    is_new = false;
    return positions_.back();
  }
  if (slots_.empty()) {
    // Sized for the tokens of an ordinary text, so that it seldom has to grow.
    slots_.assign(1024, kEmpty);
    positions_.reserve(512);
  }
  const std::uint64_t hash = hash_token(token);
  const auto short_hash = static_cast<std::uint32_t>(hash);
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  for (;; slot = (slot + 1) & mask) {
    const std::uint32_t index = slots_[slot];
    if (index == kEmpty) break;
    if (short_hashes_[index] == short_hash && distinct_[index] == token) {
      is_new = false;
      return index;
    }
  }
  const auto index = static_cast<std::uint32_t>(distinct_.size());
  distinct_.push_back(token);
  short_hashes_.push_back(short_hash);
  vocabulary_ids_.push_back(vocabulary_.find(token, hash));
  slots_[slot] = index;
  if (distinct_.size() * 2 > slots_.size()) grow();
  is_new = true;
  return index;
}

void TextTokens::grow() {
  slots_ = hash_slots(short_hashes_, slots_.size() * 2, kEmpty);  // low bits of the full hash
}

void TextTokens::take_view(std::string_view token) {
  bool is_new = false;
  positions_.push_back(distinct_index(token, is_new));
}

void TextTokens::take_copy(std::string_view token) {
  bool is_new = false;
  const std::uint32_t index = distinct_index(token, is_new);
  if (is_new) {
    // The table must not keep a view of the caller's scratch string.
    owned_.emplace_back(token);
    distinct_[index] = owned_.back();
  }
  positions_.push_back(index);
}

}  // namespace quillon::lingomat
