#pragma once

#include <cstddef>
#include <string>

namespace quillon::lingomat::tools {

// One entry of a help text: `term` ("  -j, --jobs N") with its explanation beside it
// from kHelpColumn on, or below when the term is too wide, wrapped to kHelpWidth.
// Continuation lines do not start with '-', so that nothing but a term reads as one.
inline constexpr std::size_t kHelpColumn = 24;
inline constexpr std::size_t kHelpWidth = 79;
std::string help_entry(const std::string& term, const std::string& text);

}  // namespace quillon::lingomat::tools
