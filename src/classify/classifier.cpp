#include "classify/classifier.h"

#include "json/json_member_index.h"
#include "json/json_reader.h"

namespace quillon::lingomat {
namespace {

// Counts are stored as 32-bit JSON integers and widened with sign extension on purpose:
// a negative count wraps instead of being rejected.
std::uint64_t widen(int value) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

std::uint64_t read_count(const JsonValue& value) {
  if (!value.IsInt()) throw JsonException(kUnexpectedType);
  return widen(value.GetInt());
}

std::map<std::string, std::uint64_t, std::less<>> read_token_counts(const JsonValue& value) {
  if (!value.IsObject()) throw JsonException(kUnexpectedType);
  std::map<std::string, std::uint64_t, std::less<>> counts;
  for (const auto& member : value.GetObject()) {
    std::uint64_t& count = counts[json_string(member.name)];
    count = read_count(member.value);
  }
  return counts;
}

}  // namespace

Classifier::Classifier(const Opts& opts)
    : data_file_(opts.data_file), min_tokens_(opts.min_tokens), max_results_(opts.max_results) {
  const JsonDocument document = parse_json_file(data_file_);
  const auto language_tokens = json_get<JsonConstObject>(document, "language_tokens");
  const auto tokens = json_get<JsonConstObject>(document, "tokens");
  const auto languages = json_get<JsonConstObject>(document, "languages");
  // Looked up once per language: indexed, so that loading stays linear in their number.
  const JsonMemberIndex language_tokens_index(language_tokens);
  const JsonMemberIndex tokens_index(tokens);

  for (const auto& member : languages) {
    const std::string name = json_string(member.name);
    const std::uint64_t samples = read_count(member.value);
    const std::uint64_t token_total = read_count(language_tokens_index.at(name));
    auto token_counts = read_token_counts(tokens_index.at(name));

    ClassifierLang& lang = languages_[name];
    lang.tokens = token_total;
    lang.samples = samples;
    lang.token_counts = std::move(token_counts);
  }

  tokens_total_ = widen(json_get<int>(document, "tokens_total"));
  languages_total_ = widen(json_get<int>(document, "languages_total"));
}

std::vector<std::string> Classifier::languages() const {
  std::vector<std::string> names;
  names.reserve(languages_.size());
  for (const auto& entry : languages_) names.push_back(entry.first);
  return names;
}

const char* Classifier::language_resident_c_str(const std::string& name) const {
  const auto found = languages_.find(name);
  return found == languages_.end() ? nullptr : found->first.c_str();
}

}  // namespace quillon::lingomat
