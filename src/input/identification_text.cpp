#include "input/identification_text.h"

#include <cstdint>

#include "input/utf16_text.h"

namespace quillon::lingomat {

namespace {

// Counts tokens and keeps none: only how far the tokenizer reads matters here.
class TokenCounter : public TokenSink {
 protected:
  void take_view(std::string_view) override {}
  void take_copy(std::string_view) override {}
};

// Slack beyond the byte limit for a first attempt, so that a token, comment or string that
// starts just below the limit usually ends inside the converted part.
constexpr std::size_t kFirstSlackUnits = 4096;

}  // namespace

IdentificationText::IdentificationText(std::string_view content, const Tokenizer& tokenizer)
    : view_(content) {
  if (!starts_with_utf16_bom(content)) return;
  decoded_ = true;
  const std::uint64_t max_bytes = tokenizer.opts().max_bytes;
  // Without a byte limit the tokenizer may read everything. Each code unit gives at least one
  // UTF-8 byte, so a prefix of max_bytes units already reaches the limit.
  std::size_t units =
      max_bytes == 0 || max_bytes > content.size() ? content.size() : max_bytes + kFirstSlackUnits;
  for (;;) {
    Utf16Prefix prefix = utf16_prefix_to_utf8(content, units);
    converted_ = std::move(prefix.text);
    if (prefix.complete) break;
    // The name strategies and the "#!" line read no further than the tokenizer's first step.
    TokenCounter counter;
    if (tokenizer.extract_tokens_and_reach(converted_, counter) <= converted_.size()) break;
    units = units > content.size() / 4 ? content.size() : units * 4;
  }
  view_ = converted_;
}

}  // namespace quillon::lingomat
