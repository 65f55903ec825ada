#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quillon::lingomat::cli {

// Files and bytes per language over a whole run.
class LanguageSummary {
 public:
  // An empty language counts as unidentified.
  void add(const std::string& language, std::uint64_t bytes);

  // Aligned table, biggest language first, with a total line.
  std::string table() const;
  // One JSON object per language, same order; "share" is a fraction of all bytes.
  std::string json_lines() const;

 private:
  struct Tally {
    std::size_t files = 0;
    std::uint64_t bytes = 0;
  };
  using Row = std::pair<std::string, Tally>;

  std::vector<Row> sorted_rows() const;
  double share(std::uint64_t bytes) const;

  std::map<std::string, Tally> tallies_;
  std::size_t total_files_ = 0;
  std::uint64_t total_bytes_ = 0;
};

}  // namespace quillon::lingomat::cli
