#include "reference_engine.h"

#include <algorithm>
#include <cmath>

#include "json/json_reader.h"

namespace quillon::lingomat::reference {
namespace {

std::uint64_t widen(int value) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

const JsonValue& member_named(const JsonConstObject& object, const std::string& name) {
  const auto found = object.FindMember(
      rapidjson::StringRef(name.data(), static_cast<rapidjson::SizeType>(name.size())));
  if (found == object.MemberEnd()) throw JsonException(kMissingKey);
  return found->value;
}

std::uint64_t count_of(const JsonValue& value) {
  if (!value.IsInt()) throw JsonException(kUnexpectedType);
  return widen(value.GetInt());
}

void build_lookup(std::map<std::string, std::vector<std::string>>& lookup,
                  const JsonValue& document, const char* key) {
  if (!document.IsObject()) throw JsonException(kNotAnObject);
  const auto member = document.FindMember(key);
  if (member == document.MemberEnd()) throw JsonException(kMissingKey);
  if (!member->value.IsObject()) throw JsonException(kUnexpectedType);
  for (const auto& entry : member->value.GetObject()) {
    const std::string language = json_string(entry.name);
    if (!entry.value.IsArray()) throw JsonException(kUnexpectedType);
    for (const auto& name : entry.value.GetArray()) lookup[json_string(name)].push_back(language);
  }
}

std::vector<std::string> lookup_in(const std::map<std::string, std::vector<std::string>>& lookup,
                                   const std::string& key) {
  const auto found = lookup.find(key);
  return found == lookup.end() ? std::vector<std::string>() : found->second;
}

}  // namespace

Classifier::Classifier(const std::string& data_file, std::uint64_t min_tokens)
    : min_tokens_(min_tokens) {
  const JsonDocument document = parse_json_file(data_file);
  const auto language_tokens = json_get<JsonConstObject>(document, "language_tokens");
  const auto tokens = json_get<JsonConstObject>(document, "tokens");
  const auto languages = json_get<JsonConstObject>(document, "languages");
  for (const auto& member : languages) {
    const std::string name = json_string(member.name);
    const std::uint64_t samples = count_of(member.value);
    const std::uint64_t total = count_of(member_named(language_tokens, name));
    const JsonValue& counts = member_named(tokens, name);
    if (!counts.IsObject()) throw JsonException(kUnexpectedType);
    std::map<std::string, std::uint64_t> token_counts;
    for (const auto& token : counts.GetObject()) {
      std::uint64_t& count = token_counts[json_string(token.name)];
      count = count_of(token.value);
    }
    Language& language = languages_[name];
    language.tokens = total;
    language.samples = samples;
    language.token_counts = token_counts;
  }
  tokens_total_ = widen(json_get<int>(document, "tokens_total"));
  languages_total_ = widen(json_get<int>(document, "languages_total"));
}

std::vector<std::string> Classifier::languages() const {
  std::vector<std::string> names;
  for (const auto& entry : languages_) names.push_back(entry.first);
  return names;
}

Ranking Classifier::classify(const std::vector<std::string>& tokens,
                             const std::vector<std::string>& languages) const {
  Ranking ranking;
  if (min_tokens_ != 0 && tokens.size() < min_tokens_) return ranking;
  for (const std::string& name : languages) {
    const auto found = languages_.find(name);
    if (found == languages_.end()) continue;
    const Language& language = found->second;
    double sum = 0.0;
    for (const std::string& token : tokens) {
      const auto count = language.token_counts.find(token);
      sum +=
          count == language.token_counts.end()
              ? std::log(1.0 / static_cast<double>(tokens_total_))
              : std::log(static_cast<double>(count->second) / static_cast<double>(language.tokens));
    }
    ranking.emplace_back(name, sum + std::log(static_cast<double>(language.samples) /
                                              static_cast<double>(languages_total_)));
  }
  // The library's tie rule: NaN last, equal scores in candidate order.
  std::stable_sort(ranking.begin(), ranking.end(), [](const auto& a, const auto& b) {
    return a.second > b.second || (std::isnan(b.second) && !std::isnan(a.second));
  });
  return ranking;
}

Engine::Engine(const EngineOpts& opts) : opts_(opts), classifier_(opts.data_file, opts.min_tokens) {
  const JsonDocument document = parse_json_file(opts.data_file);
  build_lookup(filenames_, document, "filenames");
  build_lookup(extnames_, document, "extnames");
  build_lookup(interpreters_, document, "interpreters");
  std::sort(opts_.restrictions.begin(), opts_.restrictions.end());
}

Ranking Engine::identify_by_classifier(const std::string& code,
                                       const std::vector<std::string>& candidates) const {
  const std::vector<std::string> tokens = extract_tokens(code, opts_.tokenizer);
  const std::vector<std::string> names = !candidates.empty()          ? candidates
                                         : opts_.restrictions.empty() ? classifier_.languages()
                                                                      : opts_.restrictions;
  Ranking ranking = classifier_.classify(tokens, names);
  const double floor = opts_.min_score_per_token;
  if (floor != 0.0) {
    Ranking kept;
    for (const auto& entry : ranking) {
      if (!(floor > entry.second / static_cast<double>(tokens.size()))) kept.push_back(entry);
    }
    ranking = kept;
  }
  return ranking;
}

std::string Engine::identify(const std::string& file_name, const std::string& code) const {
  std::vector<std::string> candidates = lookup_in(filenames_, file_name);
  for (const std::string& name : lookup_in(interpreters_, extract_shebang(code))) {
    candidates.push_back(name);
  }
  const auto dot = file_name.rfind('.');
  if (dot != std::string::npos) {
    for (const std::string& name : lookup_in(extnames_, file_name.substr(dot))) {
      candidates.push_back(name);
    }
  }
  if (!opts_.restrictions.empty()) {
    std::vector<std::string> allowed;
    for (const std::string& name : candidates) {
      if (std::binary_search(opts_.restrictions.begin(), opts_.restrictions.end(), name)) {
        allowed.push_back(name);
      }
    }
    candidates = allowed;
  }
  const Ranking ranking = identify_by_classifier(code, candidates);
  if (!ranking.empty()) return ranking.front().first;
  return candidates.empty() ? std::string() : candidates.front();
}

}  // namespace quillon::lingomat::reference
