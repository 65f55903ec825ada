#pragma once

#include <cstdint>

#include "engine/engine.h"
#include "lingomat.h"

namespace quillon::lingomat {

// The engine's options from the C record, for the plug-in and the Python package's library
// alike: a null restriction name is the empty name, and a null list is none.
inline Lingomat::Opts engine_options(const LingomatOpts& opts) {
  Lingomat::Opts result;
  result.classifier.data_file = opts.dataFile;
  result.tokenizer.max_bytes = opts.maxScanBytes;
  result.classifier.min_score_per_token = opts.minScorePerToken;
  result.tokenizer.max_tokens = opts.maxTokens;
  result.classifier.min_tokens = opts.minTokens;
  if (opts.restrictionCount != 0 && opts.restrictions != nullptr) {
    result.restrictions.reserve(opts.restrictionCount);
    for (std::uint64_t i = 0; i < opts.restrictionCount; ++i) {
      const char* name = opts.restrictions[i];
      result.restrictions.emplace_back(name == nullptr ? "" : name);
    }
  }
  return result;
}

}  // namespace quillon::lingomat
