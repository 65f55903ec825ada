#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quillon::lingomat::cli {

// Decimal digits only: no sign, no blanks, no overflow.
std::optional<std::uint64_t> parse_unsigned(const std::string& text);

// A complete decimal number that is neither NaN nor infinite (overflow included).
std::optional<double> parse_finite_double(const std::string& text);

}  // namespace quillon::lingomat::cli
