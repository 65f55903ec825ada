#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "classify/vocabulary.h"
#include "tokenize/token_sink.h"

namespace quillon::lingomat {

// The tokens of one text as scoring needs them: each distinct token once, with its id in the
// data file's vocabulary, and for every position which distinct token stands there. Distinct
// tokens are found by content in a small table of their own, so the large vocabulary is
// consulted once per distinct token, not once per position.
class TextTokens : public TokenSink {
 public:
  explicit TextTokens(const Vocabulary& vocabulary) : vocabulary_(vocabulary) {}

  // Position -> index of the distinct token standing there.
  const std::vector<std::uint32_t>& positions() const { return positions_; }
  // Distinct token index -> vocabulary id, or Vocabulary::kAbsent for a token never seen.
  const std::vector<std::uint32_t>& vocabulary_ids() const { return vocabulary_ids_; }

 protected:
  void take_view(std::string_view token) override;
  void take_copy(std::string_view token) override;

 private:
  // Index of the distinct token equal to `token`, or the index of a new one, and whether new.
  std::uint32_t distinct_index(std::string_view token, bool& is_new);
  void grow();

  const Vocabulary& vocabulary_;
  std::vector<std::string_view> distinct_;
  std::vector<std::uint32_t> short_hashes_;
  std::vector<std::uint32_t> vocabulary_ids_;
  std::vector<std::uint32_t> slots_;
  std::vector<std::uint32_t> positions_;
  std::deque<std::string> owned_;  // the built tokens that distinct_ points into
};

}  // namespace quillon::lingomat
