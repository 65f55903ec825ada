#include "number_parsing.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace quillon::lingomat::cli {

std::optional<std::uint64_t> parse_unsigned(const std::string& text) {
  if (text.empty()) return std::nullopt;
  constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    const std::uint64_t digit = static_cast<std::uint64_t>(c - '0');
    if (value > (kMax - digit) / 10) return std::nullopt;
    value = value * 10 + digit;
  }
  return value;
}

std::optional<double> parse_finite_double(const std::string& text) {
  // strtod would skip leading blanks; a value with blanks is a typo.
  if (text.empty() || std::isspace(static_cast<unsigned char>(text[0]))) return std::nullopt;
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size()) return std::nullopt;
  if (!std::isfinite(value)) return std::nullopt;  // nan, inf and overflow
  return value;
}

}  // namespace quillon::lingomat::cli
