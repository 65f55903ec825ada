#include "language_summary.h"

#include <algorithm>
#include <cstdio>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "common/json_text.h"

namespace quillon::lingomat::cli {

namespace {

constexpr const char* kUnidentifiedLabel = "(unidentified)";

std::string table_row(const std::string& label, int label_width, std::size_t files,
                      std::uint64_t bytes, double share) {
  char buffer[512];
  std::snprintf(buffer, sizeof buffer, "%-*s %8zu %14llu %7.2f%%\n", label_width, label.c_str(),
                files, static_cast<unsigned long long>(bytes), share * 100.0);
  return buffer;
}

}  // namespace

void LanguageSummary::add(const std::string& language, std::uint64_t bytes) {
  Tally& tally = tallies_[language];
  ++tally.files;
  tally.bytes += bytes;
  ++total_files_;
  total_bytes_ += bytes;
}

double LanguageSummary::share(std::uint64_t bytes) const {
  return total_bytes_ == 0 ? 0.0 : static_cast<double>(bytes) / static_cast<double>(total_bytes_);
}

std::vector<LanguageSummary::Row> LanguageSummary::sorted_rows() const {
  std::vector<Row> rows(tallies_.begin(), tallies_.end());
  // Ties fall back to the name (the map's order) so the table never varies.
  std::stable_sort(rows.begin(), rows.end(),
                   [](const Row& a, const Row& b) { return a.second.bytes > b.second.bytes; });
  return rows;
}

std::string LanguageSummary::table() const {
  const std::vector<Row> rows = sorted_rows();
  std::size_t width = std::string("language").size();
  for (const Row& row : rows) {
    width = std::max(width,
                     row.first.empty() ? std::string(kUnidentifiedLabel).size() : row.first.size());
  }
  const int label_width = static_cast<int>(std::min<std::size_t>(width, 200));
  char header[512];
  std::snprintf(header, sizeof header, "%-*s %8s %14s %8s\n", label_width, "language", "files",
                "bytes", "share");
  std::string text = header;
  for (const auto& [language, tally] : rows) {
    text += table_row(language.empty() ? kUnidentifiedLabel : language, label_width, tally.files,
                      tally.bytes, share(tally.bytes));
  }
  text += table_row("total", label_width, total_files_, total_bytes_, total_bytes_ ? 1.0 : 0.0);
  return text;
}

std::string LanguageSummary::json_lines() const {
  std::string text;
  for (const auto& [language, tally] : sorted_rows()) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("language");
    tools::write_json_string_or_null(writer, language);
    writer.Key("files");
    writer.Uint64(tally.files);
    writer.Key("bytes");
    writer.Uint64(tally.bytes);
    writer.Key("share");
    writer.Double(share(tally.bytes));
    writer.EndObject();
    text.append(buffer.GetString(), buffer.GetSize());
    text += '\n';
  }
  return text;
}

}  // namespace quillon::lingomat::cli
