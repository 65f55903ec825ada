#include "tokenize/string_scanner.h"

#include "tokenize/native_patterns.h"

namespace quillon::lingomat {

const std::regex& StringScanner::Detail::get(const std::string& pattern) {
  if (patterns.find(pattern) == patterns.end()) {
    // Compile before inserting, so a rejected pattern leaves the cache as it was.
    std::regex compiled(pattern, std::regex_constants::optimize);
    patterns[pattern] = std::move(compiled);
  }
  return patterns.at(pattern);
}

StringScanner::StringScanner(const std::string& text)
    : detail_(std::make_unique<Detail>()), text_(text) {}

StringScanner::~StringScanner() = default;

bool StringScanner::line_begin() const { return pos_ == 0 || text_[pos_ - 1] == '\n'; }

std::string StringScanner::peek(std::uint64_t count, std::int64_t offset) const {
  return text_.substr(pos_ + static_cast<std::uint64_t>(offset), count);
}

std::string StringScanner::scan(const std::string& pattern) {
  if (pos_ > text_.size()) return std::string();  // a cursor past the end matches nothing
  if (const NativePattern* native = find_native_pattern(pattern)) return scan_native(*native);
  const std::regex& expression = detail_->get(pattern);
  const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(pos_);
  std::smatch match;
  if (!std::regex_search(begin, text_.end(), match, expression,
                         std::regex_constants::match_continuous) ||
      match[0].first != begin) {
    return std::string();
  }
  pos_ += static_cast<std::uint64_t>(match.length(0));
  return match.str(0);
}

std::uint64_t StringScanner::skip_until(const std::string& pattern) {
  if (pos_ > text_.size()) return 0;
  if (const NativePattern* native = find_native_pattern(pattern)) return skip_until_native(*native);
  const std::regex& expression = detail_->get(pattern);
  const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(pos_);
  std::smatch match;
  if (!std::regex_search(begin, text_.end(), match, expression)) return 0;
  const std::uint64_t old_pos = pos_;
  pos_ = static_cast<std::uint64_t>(match[0].second - text_.begin());
  return pos_ - old_pos;
}

StringScanner::KnownFailure& StringScanner::known_failure(const NativePattern* pattern) {
  for (KnownFailure& failure : known_failures_) {
    if (failure.pattern == pattern) return failure;
  }
  known_failures_.push_back(KnownFailure{pattern});
  return known_failures_.back();
}

std::string StringScanner::scan_native(const NativePattern& pattern) {
  KnownFailure& failure = known_failure(&pattern);
  if (pos_ >= failure.scan_from && pos_ <= failure.scan_through) return std::string();
  const char* at = text_.data() + pos_;
  const char* end = text_.data() + text_.size();
  const std::size_t length = pattern.match(at, end);
  if (length == NativePattern::kNoMatch || length == 0) {
    if (length == NativePattern::kNoMatch && pattern.fails_through != nullptr) {
      failure.scan_from = pos_;
      failure.scan_through =
          static_cast<std::uint64_t>(pattern.fails_through(at, end) - text_.data());
    }
    return std::string();
  }
  pos_ += length;
  return std::string(at, length);
}

std::uint64_t StringScanner::skip_until_native(const NativePattern& pattern) {
  KnownFailure& failure = known_failure(&pattern);
  if (pos_ >= failure.search_from) return 0;
  const char* const end = text_.data() + text_.size();
  for (const char* at = text_.data() + pos_;; ++at) {
    const std::size_t length = pattern.match(at, end);
    if (length != NativePattern::kNoMatch) {
      const std::uint64_t old_pos = pos_;
      pos_ = static_cast<std::uint64_t>(at - text_.data()) + length;
      return pos_ - old_pos;
    }
    if (at == end) break;
  }
  failure.search_from = pos_;
  return 0;
}

std::string StringScanner::pattern_escape(const std::string& text) {
  static const std::regex special_chars("[\\\\$.|?*+()[{}^]", std::regex_constants::ECMAScript);
  return std::regex_replace(text, special_chars, "\\$&");
}

}  // namespace quillon::lingomat
