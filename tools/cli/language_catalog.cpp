#include "language_catalog.h"

#include <algorithm>
#include <cctype>
#include <map>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace quillon::lingomat::cli {

namespace {

using Catalog = std::map<std::string, LanguageEntry>;

LanguageEntry& entry_for(Catalog& catalog, const std::string& name) {
  LanguageEntry& entry = catalog[name];
  entry.name = name;
  return entry;
}

void add_lists(Catalog& catalog, const LanguageNames& lists,
               std::vector<std::string> LanguageEntry::*field) {
  for (const auto& [language, names] : lists) {
    std::vector<std::string>& kept = entry_for(catalog, language).*field;
    kept.insert(kept.end(), names.begin(), names.end());
  }
}

std::vector<LanguageEntry> sorted_entries(Catalog& catalog) {
  std::vector<LanguageEntry> entries;
  for (auto& [name, entry] : catalog) entries.push_back(std::move(entry));
  return entries;
}

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::size_t edit_distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

void write_list(rapidjson::Writer<rapidjson::StringBuffer>& writer, const char* key,
                const std::vector<std::string>& items) {
  writer.Key(key);
  writer.StartArray();
  for (const std::string& item : items) {
    writer.String(item.c_str(), static_cast<rapidjson::SizeType>(item.size()));
  }
  writer.EndArray();
}

}  // namespace

std::vector<LanguageEntry> read_language_catalog(const std::string& data_file) {
  const DataFileNames names = read_data_file_names(data_file);
  Catalog catalog;
  add_lists(catalog, names.extnames, &LanguageEntry::extensions);
  add_lists(catalog, names.filenames, &LanguageEntry::filenames);
  add_lists(catalog, names.interpreters, &LanguageEntry::interpreters);
  for (const std::string& language : names.languages) {
    entry_for(catalog, language).has_statistics = true;
  }
  return sorted_entries(catalog);
}

std::vector<LanguageEntry> language_catalog(const Lingomat& engine) {
  Catalog catalog;
  add_lists(catalog, engine.extnames_by_language(), &LanguageEntry::extensions);
  add_lists(catalog, engine.filenames_by_language(), &LanguageEntry::filenames);
  add_lists(catalog, engine.interpreters_by_language(), &LanguageEntry::interpreters);
  for (const std::string& language : engine.classifier().languages()) {
    entry_for(catalog, language).has_statistics = true;
  }
  return sorted_entries(catalog);
}

std::string catalog_text(const std::vector<LanguageEntry>& catalog) {
  std::string text;
  for (const LanguageEntry& entry : catalog) {
    text += entry.name + '\t';
    const char* separator = "";
    for (const std::string& extension : entry.extensions) {
      text += separator + extension;
      separator = " ";
    }
    text += '\n';
  }
  return text;
}

std::string catalog_json_lines(const std::vector<LanguageEntry>& catalog) {
  std::string lines;
  for (const LanguageEntry& entry : catalog) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("name");
    writer.String(entry.name.c_str(), static_cast<rapidjson::SizeType>(entry.name.size()));
    write_list(writer, "extensions", entry.extensions);
    write_list(writer, "filenames", entry.filenames);
    write_list(writer, "interpreters", entry.interpreters);
    writer.Key("by_content");
    writer.Bool(entry.has_statistics);
    writer.EndObject();
    lines.append(buffer.GetString(), buffer.GetSize());
    lines += '\n';
  }
  return lines;
}

std::vector<std::string> closest_names(const std::string& unknown,
                                       const std::vector<LanguageEntry>& catalog) {
  const std::string wanted = lower(unknown);
  std::vector<std::pair<std::size_t, std::string>> scored;
  for (const LanguageEntry& entry : catalog) {
    const std::size_t distance = edit_distance(wanted, lower(entry.name));
    if (distance <= std::max<std::size_t>(1, entry.name.size() / 3)) {
      scored.emplace_back(distance, entry.name);
    }
  }
  std::stable_sort(scored.begin(), scored.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> names;
  for (std::size_t i = 0; i < scored.size() && i < 3; ++i) names.push_back(scored[i].second);
  return names;
}

std::string did_you_mean(const std::string& unknown, const std::vector<LanguageEntry>& catalog) {
  const std::vector<std::string> close = closest_names(unknown, catalog);
  std::string hint;
  for (std::size_t i = 0; i < close.size(); ++i) {
    hint += (i == 0 ? "; did you mean '" : "' or '") + close[i];
  }
  if (!close.empty()) hint += "'?";
  return hint;
}

const std::string* first_unknown_name(const std::vector<std::string>& names,
                                      const std::vector<LanguageEntry>& catalog) {
  for (const std::string& name : names) {
    const bool known = std::any_of(catalog.begin(), catalog.end(),
                                   [&](const LanguageEntry& entry) { return entry.name == name; });
    if (!known) return &name;
  }
  return nullptr;
}

}  // namespace quillon::lingomat::cli
