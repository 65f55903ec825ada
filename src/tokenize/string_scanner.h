#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <vector>

namespace quillon::lingomat {

struct NativePattern;

// A cursor over one text, moved by regular expressions. Patterns are compiled
// once per scanner and cached; the text is referenced, never copied.
class StringScanner {
 public:
  struct Detail {
    std::map<std::string, std::regex> patterns;
    const std::regex& get(const std::string& pattern);
  };

  explicit StringScanner(const std::string& text);
  ~StringScanner();
  StringScanner(const StringScanner&) = delete;
  StringScanner& operator=(const StringScanner&) = delete;

  std::uint64_t pos() const { return pos_; }
  bool eos() const { return pos_ == text_.size(); }
  bool line_begin() const;
  std::string peek(std::uint64_t count, std::int64_t offset) const;
  void advance() { ++pos_; }
  void set_pos(std::uint64_t pos) { pos_ = pos; }

  // Consumes a match that starts exactly at the cursor; empty when none.
  std::string scan(const std::string& pattern);
  // Moves past the next match anywhere after the cursor; returns the distance.
  std::uint64_t skip_until(const std::string& pattern);

  static std::string pattern_escape(const std::string& text);

 private:
  // Failures of the built-in patterns already seen in this text. A search that found nothing
  // from some position finds nothing from any later one either, so callers that retry at
  // every byte stay linear instead of rescanning the rest of the text each time.
  struct KnownFailure {
    const NativePattern* pattern;
    std::uint64_t scan_from = 1;  // empty range until a scan fails
    std::uint64_t scan_through = 0;
    std::uint64_t search_from = UINT64_MAX;
  };
  KnownFailure& known_failure(const NativePattern* pattern);

  std::string scan_native(const NativePattern& pattern);
  std::uint64_t skip_until_native(const NativePattern& pattern);

  std::unique_ptr<Detail> detail_;
  const std::string& text_;
  std::uint64_t pos_ = 0;
  std::vector<KnownFailure> known_failures_;
};

}  // namespace quillon::lingomat
