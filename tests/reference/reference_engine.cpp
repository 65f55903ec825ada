#include "reference_engine.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

// Reads the data file with RapidJSON directly, so that the library's own reading is compared
// too, and throws std::runtime_error with the library's messages for what it refuses.
namespace quillon::lingomat::reference {
namespace {

using Value = rapidjson::Value;

[[noreturn]] void refuse(const char* message) { throw std::runtime_error(message); }

rapidjson::Document parse(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  stream.exceptions(std::ios::failbit | std::ios::badbit);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  rapidjson::Document document;
  document.Parse(text.c_str());  // up to the first NUL byte
  if (document.HasParseError()) refuse(rapidjson::GetParseError_En(document.GetParseError()));
  return document;
}

std::string string_of(const Value& value) {
  if (!value.IsString()) refuse("Expected JSON value to be a string");
  return std::string(value.GetString(), value.GetStringLength());
}

// The first member named `name`; `object` must be an object.
const Value& member(const Value& object, const std::string& name) {
  if (!object.IsObject()) refuse("Expected JSON value to be an object");
  const auto found = object.FindMember(
      Value(rapidjson::StringRef(name.data(), static_cast<rapidjson::SizeType>(name.size()))));
  if (found == object.MemberEnd()) refuse("JSON object missing expected key");
  return found->value;
}

const Value& object_member(const Value& object, const std::string& name) {
  const Value& value = member(object, name);
  if (!value.IsObject()) refuse("JSON value was of an unexpected type");
  return value;
}

// 32-bit integers, widened with their sign: -1 is stored as 2^64 - 1.
std::uint64_t count_of(const Value& value) {
  if (!value.IsInt()) refuse("JSON value was of an unexpected type");
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value.GetInt()));
}

void build_lookup(std::map<std::string, std::vector<std::string>>& lookup, const Value& document,
                  const char* key) {
  for (const auto& entry : object_member(document, key).GetObject()) {
    const std::string language = string_of(entry.name);
    if (!entry.value.IsArray()) refuse("JSON value was of an unexpected type");
    for (const auto& name : entry.value.GetArray()) lookup[string_of(name)].push_back(language);
  }
}

std::vector<std::string> lookup_in(const std::map<std::string, std::vector<std::string>>& lookup,
                                   const std::string& key) {
  const auto found = lookup.find(key);
  return found == lookup.end() ? std::vector<std::string>() : found->second;
}

}  // namespace

Engine::Engine(const EngineOpts& opts) : opts_(opts) {
  const rapidjson::Document document = parse(opts.data_file);
  const Value& language_tokens = object_member(document, "language_tokens");
  const Value& tokens = object_member(document, "tokens");
  for (const auto& entry : object_member(document, "languages").GetObject()) {
    const std::string name = string_of(entry.name);
    const std::uint64_t samples = count_of(entry.value);
    const std::uint64_t total = count_of(member(language_tokens, name));
    std::map<std::string, std::uint64_t> token_counts;
    for (const auto& token : object_member(tokens, name).GetObject()) {
      token_counts[string_of(token.name)] = count_of(token.value);
    }
    languages_[name] = Language{total, samples, token_counts};  // the last of a name wins
  }
  tokens_total_ = count_of(member(document, "tokens_total"));
  languages_total_ = count_of(member(document, "languages_total"));
  build_lookup(filenames_, document, "filenames");
  build_lookup(extnames_, document, "extnames");
  build_lookup(interpreters_, document, "interpreters");
  std::sort(opts_.restrictions.begin(), opts_.restrictions.end());
}

std::vector<std::string> Engine::languages() const {
  std::vector<std::string> names;
  for (const auto& entry : languages_) names.push_back(entry.first);
  return names;
}

Ranking Engine::classify(const std::vector<std::string>& tokens,
                         const std::vector<std::string>& languages) const {
  Ranking ranking;
  if (opts_.min_tokens != 0 && tokens.size() < opts_.min_tokens) return ranking;
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

Ranking Engine::identify_by_classifier(const std::string& code,
                                       const std::vector<std::string>& candidates) const {
  const std::vector<std::string> tokens = extract_tokens(code, opts_.tokenizer);
  const std::vector<std::string> names = !candidates.empty()          ? candidates
                                         : opts_.restrictions.empty() ? languages()
                                                                      : opts_.restrictions;
  Ranking ranking = classify(tokens, names);
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
  const auto dot = file_name.rfind('.');
  for (const std::vector<std::string>& more :
       {lookup_in(interpreters_, extract_shebang(code)),
        dot == std::string::npos ? std::vector<std::string>()
                                 : lookup_in(extnames_, file_name.substr(dot))}) {
    candidates.insert(candidates.end(), more.begin(), more.end());
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
