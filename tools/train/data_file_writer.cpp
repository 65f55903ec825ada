#include "train/data_file_writer.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "base/data_file_keys.h"
#include "common/tool_error.h"

namespace quillon::lingomat::tools {

namespace {

using Writer = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

constexpr std::uint64_t kMaxCount = std::numeric_limits<std::int32_t>::max();

int checked_count(std::uint64_t count, const std::string& what) {
  if (count > kMaxCount) {
    throw ToolError(what + " is " + std::to_string(count) +
                    ", more than the data file's limit of 2147483647; train on fewer samples "
                    "(--max-samples) or fewer tokens per sample (--max-tokens)");
  }
  return static_cast<int>(count);
}

void write_string(Writer& writer, const std::string& text) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void write_key(Writer& writer, const std::string& text) {
  writer.Key(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void write_names(Writer& writer, const char* key, const std::vector<LanguageDefinition>& languages,
                 std::vector<std::string> LanguageDefinition::*names) {
  writer.Key(key);
  writer.StartObject();
  for (const LanguageDefinition& language : languages) {
    if ((language.*names).empty()) continue;
    write_key(writer, language.name);
    writer.StartArray();
    for (const std::string& name : language.*names) write_string(writer, name);
    writer.EndArray();
  }
  writer.EndObject();
}

}  // namespace

std::string render_data_file(const std::vector<LanguageDefinition>& languages,
                             const std::vector<LanguageStatistics>& statistics,
                             const Calibration& calibration,
                             const DiscriminativeRecord& discriminative) {
  if (statistics.size() != languages.size()) {
    throw std::logic_error("render_data_file: one statistics entry per language expected");
  }
  if (calibration.count_scale == 0 || calibration.count_scale > kMaxCount) {
    throw ToolError("the count scale must be between 1 and 2147483647");
  }
  const std::uint64_t scale = calibration.count_scale;
  const bool encoded = discriminative.epochs > 0;
  const std::uint64_t count_factor = encoded ? 1 : scale;
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  // One member per line keeps the file readable in a diff; indenting the hundreds of
  // thousands of token lines would add a sixth to its size.
  writer.SetIndent(' ', 0);
  writer.SetFormatOptions(rapidjson::kFormatSingleLineArray);

  writer.StartObject();
  write_names(writer, data_keys::kFilenames, languages, &LanguageDefinition::filenames);
  write_names(writer, data_keys::kExtnames, languages, &LanguageDefinition::extensions);
  write_names(writer, data_keys::kInterpreters, languages, &LanguageDefinition::interpreters);

  std::uint64_t samples_total = 0;
  std::uint64_t tokens_total = 0;
  const auto trained = [&](std::size_t i) { return statistics[i].samples > 0; };

  writer.Key(data_keys::kLanguages);
  writer.StartObject();
  for (std::size_t i = 0; i < languages.size(); ++i) {
    if (!trained(i)) continue;
    write_key(writer, languages[i].name);
    writer.Int(checked_count(statistics[i].samples, "the sample count of " + languages[i].name));
    samples_total += statistics[i].samples;
  }
  writer.EndObject();

  writer.Key(data_keys::kLanguageTokens);
  writer.StartObject();
  for (std::size_t i = 0; i < languages.size(); ++i) {
    if (!trained(i)) continue;
    write_key(writer, languages[i].name);
    writer.Int(checked_count(statistics[i].tokens, "the token count of " + languages[i].name));
    tokens_total += statistics[i].tokens;
  }
  writer.EndObject();

  writer.Key(data_keys::kTokens);
  writer.StartObject();
  for (std::size_t i = 0; i < languages.size(); ++i) {
    if (!trained(i)) continue;
    write_key(writer, languages[i].name);
    writer.StartObject();
    for (const auto& [token, count] : statistics[i].counts) {
      write_key(writer, token);
      const std::uint64_t scaled =
          count > UINT64_MAX / count_factor ? UINT64_MAX : count * count_factor;
      writer.Int(checked_count(scaled, "a token count of " + languages[i].name +
                                           (count_factor > 1 ? " times the count scale" : "")));
    }
    writer.EndObject();
  }
  writer.EndObject();

  const std::uint64_t counted_tokens = encoded ? discriminative.counted_tokens : tokens_total;
  const std::uint64_t unseen_total =
      calibration.tokens_total > 0 ? calibration.tokens_total : counted_tokens;
  // Rounded to the nearest integer; never 0, which would make unseen tokens free.
  const std::uint64_t written_total =
      std::max<std::uint64_t>(1, (unseen_total + scale / 2) / scale);
  writer.Key(data_keys::kTokensTotal);
  writer.Int(checked_count(written_total, "tokens_total"));
  writer.Key(data_keys::kLanguagesTotal);
  writer.Int(checked_count(samples_total, "languages_total"));
  writer.Key("calibration");
  writer.StartObject();
  writer.Key("count_scale");
  writer.Int(static_cast<int>(scale));
  writer.Key("tokens_total");
  writer.Int(checked_count(unseen_total, "the tokens_total option"));
  writer.Key("counted_tokens");
  writer.Int(checked_count(counted_tokens, "the counted token total"));
  if (encoded) {
    writer.Key("discriminative");
    writer.StartObject();
    writer.Key("epochs");
    writer.Int(checked_count(discriminative.epochs, "the number of epochs"));
    writer.Key("rate");
    write_string(writer, discriminative.rate);
    if (discriminative.l2.empty()) {
      writer.Key("margin");
      write_string(writer, discriminative.margin);
    } else {
      writer.Key("loss");
      write_string(writer, "logistic");
      writer.Key("l2");
      write_string(writer, discriminative.l2);
    }
    writer.EndObject();
  }
  writer.EndObject();
  writer.EndObject();
  buffer.Put('\n');
  return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace quillon::lingomat::tools
