#pragma once

#include <cstdint>
#include <vector>

#include "train/sample_tokens.h"
#include "train/token_statistics.h"

namespace quillon::lingomat::tools {

// Drops each language's tokens used by fewer than `min_groups` of its groups: a
// group is a project, or a single file when the language has only one project;
// a language with fewer groups keeps the tokens all of them use.
// A token that only one project uses is mostly that project's own vocabulary
// (identifiers, strings); files of other projects rarely meet it, so it costs
// data file size and buys little. statistics[i] must have been counted from the
// samples of language i; the tokens totals stay as counted.
void prune_by_project_spread(std::vector<LanguageStatistics>& statistics,
                             const std::vector<SampleTokens>& samples, std::uint64_t min_groups);

}  // namespace quillon::lingomat::tools
