#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillon::lingomat::tools {

// One identification of one labelled file.
struct Identification {
  std::string expected;  // the language folder the file came from
  std::string answer;    // what the engine said; empty: no answer
  double seconds = 0;    // time spent in the engine
  std::uint64_t bytes = 0;
};

struct LanguageReport {
  std::string language;
  std::uint64_t files = 0;
  std::uint64_t correct = 0;
  std::uint64_t wrong = 0;  // answered with another language; no answer is not wrong
  std::uint64_t no_answer = 0;
  std::string mistaken_for;  // the most frequent wrong answer, ties by name; empty if none
  std::uint64_t mistaken_for_count = 0;

  double accuracy() const { return files == 0 ? 0.0 : double(correct) / double(files); }
};

struct Confusion {
  std::string expected;
  std::string answer;
  std::uint64_t count = 0;
};

// The results of one identification mode over the whole test set.
struct ModeReport {
  std::string mode;
  std::string description;
  std::uint64_t files = 0;
  std::uint64_t correct = 0;
  std::uint64_t wrong = 0;
  std::uint64_t no_answer = 0;
  std::uint64_t bytes = 0;
  double seconds = 0;  // engine time summed over every call, on whatever thread it ran
  std::vector<LanguageReport> languages;  // by name
  std::vector<Confusion> confusions;      // most frequent first, then by names

  double accuracy() const { return files == 0 ? 0.0 : double(correct) / double(files); }
  // The mean of the per-language accuracies, so small languages weigh as much as big ones.
  double language_accuracy() const;
  double files_per_second() const { return seconds > 0 ? double(files) / seconds : 0.0; }
  double megabytes_per_second() const { return seconds > 0 ? double(bytes) / 1e6 / seconds : 0.0; }
};

ModeReport build_mode_report(const std::string& mode, const std::string& description,
                             const std::vector<Identification>& identifications);

}  // namespace quillon::lingomat::tools
