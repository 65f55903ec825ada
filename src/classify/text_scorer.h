#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "classify/classifier.h"
#include "classify/term_sums.h"
#include "tokenize/token_sink.h"

namespace quillon::lingomat {

// Scores a text while it is being tokenized: each token's row of per-language terms is added
// to the running sums in text order, so no list of tokens or positions is ever kept. Rows are
// built once per distinct token the data knows and looked up by content in a small table of
// their own, so the large vocabulary is consulted once per distinct token. Every table here
// is bounded: past its budget a token is looked up and its row built where it stands, which
// costs more time per token but no memory, whatever the text.
class TextScorer : public TokenSink {
 public:
  // Scores the candidate `languages` (null: every language of the classifier).
  TextScorer(const Classifier& classifier, const std::vector<std::string>* languages);

 protected:
  void take_view(std::string_view token) override;
  void take_copy(std::string_view token) override;
  void take_joined(std::string_view head, std::string_view tail) override;

 private:
  friend class Classifier;

  // A distinct token already met: its row, or for a known token whose row is not kept, its
  // vocabulary id.
  struct Entry {
    std::string_view token;
    std::uint32_t short_hash;
    std::uint32_t vocabulary_id;
    const double* row;  // null: built anew at every occurrence
  };

  void take(std::string_view token, bool is_view);
  // The entry for `token`, or null when it is not in the table (and found no room there).
  const Entry* find_or_add(std::string_view token, bool is_view);
  Entry resolve(std::string_view token, std::uint64_t hash, bool may_keep_row);
  void add_entry(const Entry& entry);
  void grow_table();
  double* new_row();
  void fill_row(double* row, std::uint32_t vocabulary_id) const;
  // Adds the pending rows to the sums, in order.
  void flush();
  // The sums per scored language, all rows added.
  const std::vector<double>& sums();

  const Classifier& classifier_;
  std::vector<const Classifier::LanguageEntry*> candidates_;  // in order, duplicates kept
  std::vector<std::int32_t> column_;                          // language index -> column or -1
  std::vector<std::uint32_t> scored_;                         // column -> language index
  std::size_t stride_ = 0;  // columns padded to whole blocks of kSumBlock
  double unseen_ = 0.0;
  AddRows add_rows_;

  std::vector<double> sums_;
  std::unique_ptr<double[]> unseen_row_;
  std::unique_ptr<double[]> scratch_row_;
  std::vector<std::unique_ptr<double[]>> row_blocks_;
  std::size_t rows_used_ = 0;  // in the last block
  std::size_t rows_kept_ = 0;
  std::size_t max_rows_ = 0;

  std::vector<Entry> entries_;
  std::vector<std::uint32_t> slots_;
  std::size_t last_entry_ = SIZE_MAX;  // the previous token's entry, for runs of one token
  std::deque<std::string> owned_;      // built tokens the table keeps
  std::size_t owned_bytes_ = 0;

  std::vector<const double*> pending_;
  std::string joined_;  // reused for joined tokens short enough to be known
};

}  // namespace quillon::lingomat
