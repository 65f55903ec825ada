#pragma once

#include <map>
#include <string>
#include <vector>

#include "common/definitions.h"
#include "train/token_statistics.h"

namespace quillon::lingomat::tools {

// How often each language occurs in public code, in percent, as a table of lines
// "SHARE LANGUAGE NAME" (a line starting with '#' is a comment).
using LanguageShares = std::map<std::string, double>;

// Parses a shares table. Throws ToolError naming `origin` and the line for a
// malformed line, a share that is not a positive number, or a language given twice.
LanguageShares parse_language_shares(const std::string& text, const std::string& origin);

// Replaces the sample counts that set each trained language's prior by its share:
// round(share * 100), at least 1, so shares keep two decimals. A trained language the
// table does not list gets the smallest listed share. Languages without samples stay
// untrained. Throws ToolError when the table names a language that is not defined.
void weight_priors_by_shares(const std::vector<LanguageDefinition>& languages,
                             std::vector<LanguageStatistics>& statistics,
                             const LanguageShares& shares);

}  // namespace quillon::lingomat::tools
