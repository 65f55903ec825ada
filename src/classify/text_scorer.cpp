#include "classify/text_scorer.h"

#include <algorithm>
#include <cmath>

namespace quillon::lingomat {
namespace {

constexpr std::uint32_t kEmpty = UINT32_MAX;
// Distinct tokens kept per text: far more than an ordinary text has (the default limits stop
// at 500 tokens), so only hostile texts ever look tokens up where they stand.
constexpr std::size_t kMaxEntries = std::size_t{1} << 14;
constexpr std::size_t kFirstSlots = 1024;
// Slots a look-up may step over. Past it a token is treated as not kept, so that tokens made
// to collide cost a bounded probe each instead of a walk over all the others.
constexpr std::size_t kMaxProbe = 16;
// Rows of terms kept per text, in doubles: one row per distinct known token.
constexpr std::size_t kMaxKeptTerms = std::size_t{1} << 16;
constexpr std::size_t kRowsPerBlock = 32;
// Bytes of built tokens (shebang and tag-name tokens) the table may copy.
constexpr std::size_t kMaxOwnedBytes = std::size_t{1} << 18;
// Rows added per pass over the sums.
constexpr std::size_t kChunk = 1024;

}  // namespace

TextScorer::TextScorer(const Classifier& classifier, const std::vector<std::string>* languages)
    : classifier_(classifier), add_rows_(fastest_add_rows()) {
  const auto& all = classifier.languages_;
  if (languages == nullptr) {
    candidates_.reserve(all.size());
    for (const Classifier::LanguageEntry& entry : all) candidates_.push_back(&entry);
  } else {
    candidates_.reserve(languages->size());
    for (const std::string& name : *languages) {
      const auto found = all.find(name);
      if (found != all.end()) candidates_.push_back(&*found);
    }
  }
  column_.assign(classifier.by_index_.size(), -1);
  for (const Classifier::LanguageEntry* entry : candidates_) {
    const std::uint32_t index = entry->second.index;
    if (column_[index] >= 0) continue;
    column_[index] = static_cast<std::int32_t>(scored_.size());
    scored_.push_back(index);
  }
  if (scored_.empty()) return;
  // Rows are padded to whole blocks of columns; the padding is summed and thrown away.
  stride_ = (scored_.size() + kSumBlock - 1) / kSumBlock * kSumBlock;
  // Unseen tokens cost the same for every language, so they never change the order.
  unseen_ = std::log(1.0 / static_cast<double>(classifier.tokens_total_));
  sums_.assign(stride_, 0.0);
  unseen_row_.reset(new double[stride_]);
  std::fill(unseen_row_.get(), unseen_row_.get() + stride_, unseen_);
  scratch_row_.reset(new double[stride_]);
  max_rows_ = std::max<std::size_t>(1, kMaxKeptTerms / stride_);
  pending_.reserve(kChunk);
}

void TextScorer::take_view(std::string_view token) { take(token, true); }
void TextScorer::take_copy(std::string_view token) { take(token, false); }

void TextScorer::take_joined(std::string_view head, std::string_view tail) {
  if (stride_ == 0) return;  // nothing to score
  if (head.size() + tail.size() > classifier_.vocabulary_.longest()) {
    // Longer than any token of the data: unseen, and not worth building.
    last_entry_ = SIZE_MAX;
    pending_.push_back(unseen_row_.get());
    if (pending_.size() == kChunk) flush();
    return;
  }
  joined_.assign(head).append(tail);
  take(joined_, false);
}

void TextScorer::take(std::string_view token, bool is_view) {
  if (stride_ == 0) return;  // nothing to score
  const Entry* entry = nullptr;
  Entry standing;
  if (last_entry_ != SIZE_MAX && entries_[last_entry_].token == token) {
    entry = &entries_[last_entry_];  // a tag repeating one attribute skips the hashing
  } else if (token.size() > classifier_.vocabulary_.longest()) {
    standing = Entry{{}, 0, Vocabulary::kAbsent, unseen_row_.get()};  // cannot be known
    entry = &standing;
    last_entry_ = SIZE_MAX;
  } else {
    entry = find_or_add(token, is_view);
    if (entry == nullptr) {
      standing = resolve(token, classifier_.vocabulary_.hash(token), false);
      entry = &standing;
    }
  }
  if (entry->row != nullptr) {
    pending_.push_back(entry->row);
    if (pending_.size() == kChunk) flush();
    return;
  }
  // A known token whose row is not kept: built where it stands and added at once.
  fill_row(scratch_row_.get(), entry->vocabulary_id);
  pending_.push_back(scratch_row_.get());
  flush();
}

const TextScorer::Entry* TextScorer::find_or_add(std::string_view token, bool is_view) {
  const std::uint64_t hash = classifier_.vocabulary_.hash(token);
  const auto short_hash = static_cast<std::uint32_t>(hash);
  if (slots_.empty()) slots_.assign(kFirstSlots, kEmpty);
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  for (std::size_t probe = 0; probe < kMaxProbe; ++probe, slot = (slot + 1) & mask) {
    const std::uint32_t index = slots_[slot];
    if (index != kEmpty) {
      const Entry& entry = entries_[index];
      if (entry.short_hash == short_hash && entry.token == token) {
        last_entry_ = index;
        return &entry;
      }
      continue;
    }
    if (entries_.size() == kMaxEntries) break;
    if (!is_view && owned_bytes_ + token.size() > kMaxOwnedBytes) break;
    Entry entry = resolve(token, hash, true);
    if (!is_view) {
      // The table must not keep a view of the caller's scratch string.
      owned_.emplace_back(token);
      owned_bytes_ += token.size();
      entry.token = owned_.back();
    }
    const auto added = static_cast<std::uint32_t>(entries_.size());
    entries_.push_back(entry);
    slots_[slot] = added;
    last_entry_ = added;
    if (entries_.size() * 2 > slots_.size()) grow_table();
    return &entries_[added];
  }
  last_entry_ = SIZE_MAX;
  return nullptr;
}

TextScorer::Entry TextScorer::resolve(std::string_view token, std::uint64_t hash,
                                      bool may_keep_row) {
  Entry entry{token, static_cast<std::uint32_t>(hash), classifier_.vocabulary_.find(token, hash),
              nullptr};
  if (entry.vocabulary_id == Vocabulary::kAbsent) {
    entry.row = unseen_row_.get();
  } else if (may_keep_row && rows_kept_ < max_rows_) {
    double* row = new_row();
    fill_row(row, entry.vocabulary_id);
    entry.row = row;
  }
  return entry;
}

void TextScorer::grow_table() {
  if (slots_.size() >= 2 * kMaxEntries) return;
  slots_.assign(slots_.size() * 2, kEmpty);
  const std::size_t mask = slots_.size() - 1;
  for (std::uint32_t index = 0; index < entries_.size(); ++index) {
    std::size_t slot = entries_[index].short_hash & mask;
    // An entry that finds no slot within the probe limit is only forgotten: its token gets
    // looked up again, at a bounded cost.
    for (std::size_t probe = 0; probe < kMaxProbe; ++probe, slot = (slot + 1) & mask) {
      if (slots_[slot] == kEmpty) {
        slots_[slot] = index;
        break;
      }
    }
  }
}

double* TextScorer::new_row() {
  if (row_blocks_.empty() || rows_used_ == kRowsPerBlock) {
    // Left uninitialised: every row is filled before it is read. Owned before the list
    // grows, so that a failure to grow it frees the block.
    std::unique_ptr<double[]> block(new double[kRowsPerBlock * stride_]);
    row_blocks_.push_back(std::move(block));
    rows_used_ = 0;
  }
  ++rows_kept_;
  return row_blocks_.back().get() + stride_ * rows_used_++;
}

void TextScorer::fill_row(double* row, std::uint32_t vocabulary_id) const {
  std::fill(row, row + stride_, unseen_);
  const Classifier& c = classifier_;
  for (std::uint32_t p = c.posting_starts_[vocabulary_id];
       p != c.posting_starts_[vocabulary_id + 1]; ++p) {
    const std::int32_t at = column_[c.posting_languages_[p]];
    if (at >= 0) row[at] = c.posting_terms_[p];
  }
}

// Terms are added per language in text order, exactly as one addition per position would;
// the lanes of a block are separate languages, so no addition is reordered.
void TextScorer::flush() {
  if (pending_.empty()) return;
  for (std::size_t column = 0; column < stride_; column += kSumBlock) {
    add_rows_(pending_.data(), pending_.size(), column, sums_.data() + column);
  }
  pending_.clear();
}

const std::vector<double>& TextScorer::sums() {
  flush();
  return sums_;
}

}  // namespace quillon::lingomat
