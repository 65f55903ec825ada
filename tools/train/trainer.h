#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "train/train_config.h"

namespace quillon::lingomat::tools {

// What a training run produced, for the summary printed to the user.
struct TrainSummary {
  std::size_t languages = 0;            // in the data file
  std::size_t trained_languages = 0;    // with samples
  std::vector<std::string> names_only;  // defined, but no samples on the chosen side
  std::uint64_t samples = 0;
  std::uint64_t tokens = 0;
  std::uint64_t distinct_tokens = 0;  // kept, summed over languages
  std::uint64_t pruned_tokens = 0;    // distinct tokens removed, summed over languages
  std::uint64_t invalid_tokens = 0;   // occurrences dropped for not being UTF-8
  std::uint64_t output_bytes = 0;
  // With --discriminative-epochs: training samples misranked with their project left
  // out, before the first epoch and during each.
  std::vector<std::size_t> misranked;
  std::size_t scored_samples = 0;
};

// Reads the definitions and samples, counts tokens and writes the data file.
// Throws ToolError for bad input; the output file is then left as it was.
TrainSummary run_training(const TrainConfig& config);

}  // namespace quillon::lingomat::tools
