#include "result_output.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "common/json_text.h"
#include "common/utf8.h"

namespace quillon::lingomat::cli {

namespace {

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

// Plain output is one record per line with a tab between the fields, and goes to
// terminals: the bytes that would break a line up are written as \t, \n, \r and \\, and
// every other control character (C0, DEL, and the C1 controls U+0080 to U+009F, which
// terminals also act on) as \xHH for each of its bytes.
std::string escaped(const std::string& text) {
  static constexpr char kHex[] = "0123456789abcdef";
  const auto hex = [](std::string& out, unsigned char byte) {
    out += "\\x";
    out += kHex[byte >> 4];
    out += kHex[byte & 15];
  };
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte == '\t') {
      out += "\\t";
    } else if (byte == '\n') {
      out += "\\n";
    } else if (byte == '\r') {
      out += "\\r";
    } else if (byte == '\\') {
      out += "\\\\";
    } else if (byte < 0x20 || byte == 0x7F) {
      hex(out, byte);
    } else if (byte == 0xC2 && i + 1 < text.size() &&
               static_cast<unsigned char>(text[i + 1]) < 0xA0 &&
               static_cast<unsigned char>(text[i + 1]) >= 0x80) {
      hex(out, byte);
      hex(out, static_cast<unsigned char>(text[++i]));
    } else {
      out += text[i];
    }
  }
  return out;
}

std::string joined(const std::vector<std::string>& languages) {
  if (languages.empty()) return "(none)";
  std::string text;
  for (const std::string& language : languages) {
    if (!text.empty()) text += ", ";
    text += language;
  }
  return text;
}

std::string formatted(const char* format, double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, value);
  return buffer;
}

std::string ranking_lines(const Evidence& evidence) {
  if (evidence.ranking.empty()) {
    if (evidence.token_count < evidence.min_tokens) return "(none: too few tokens)\n";
    return "(none: no candidate has token statistics)\n";
  }
  std::string text;
  int rank = 0;
  for (const RankedLanguage& entry : evidence.ranking) {
    if (rank > 0) text += "               ";
    text += std::to_string(++rank) + ". " + entry.language + "  score " +
            formatted("%.2f", entry.score) + ", " + formatted("%.3f", entry.score_per_token) +
            " per token";
    if (!entry.above_floor) {
      text += ", below the floor of " + formatted("%g", evidence.min_score_per_token);
    }
    text += '\n';
  }
  return text;
}

std::string explanation_block(const Evidence& evidence) {
  std::string text;
  text += "  filename     " +
          (evidence.name.empty() ? std::string("(none)") : escaped(evidence.name)) + ": " +
          joined(evidence.by_filename) + '\n';
  text += "  interpreter  " +
          (evidence.interpreter.empty()
               ? std::string("(no #! line)")
               : escaped(evidence.interpreter) + ": " + joined(evidence.by_interpreter)) +
          '\n';
  text += "  extension    " +
          (evidence.extension.empty()
               ? std::string("(none)")
               : escaped(evidence.extension) + ": " + joined(evidence.by_extension)) +
          '\n';
  text += "  candidates   " + joined(evidence.candidates) + '\n';
  text += "  tokens       " + std::to_string(evidence.token_count) + " (the classifier needs " +
          std::to_string(evidence.min_tokens) + ")\n";
  text += "  ranking      " + ranking_lines(evidence);
  text += "  decision     " + evidence.decision + '\n';
  return text;
}

std::string base64(const std::string& bytes) {
  static constexpr char kDigits[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t left = bytes.size() - i;
    std::uint32_t group = static_cast<std::uint8_t>(bytes[i]) << 16;
    if (left > 1) group |= static_cast<std::uint8_t>(bytes[i + 1]) << 8;
    if (left > 2) group |= static_cast<std::uint8_t>(bytes[i + 2]);
    out += kDigits[(group >> 18) & 63];
    out += kDigits[(group >> 12) & 63];
    out += left > 1 ? kDigits[(group >> 6) & 63] : '=';
    out += left > 2 ? kDigits[group & 63] : '=';
  }
  return out;
}

using tools::write_json_string;
using tools::write_json_string_or_null;

// JSON has no NaN or infinity; degenerate scores become null.
void write_number(JsonWriter& writer, double value) {
  if (std::isfinite(value)) {
    writer.Double(value);
  } else {
    writer.Null();
  }
}

void write_languages(JsonWriter& writer, const std::vector<std::string>& languages) {
  writer.StartArray();
  for (const std::string& language : languages) write_json_string(writer, language);
  writer.EndArray();
}

void write_strategy(JsonWriter& writer, const char* key, const std::string& evidence,
                    const std::vector<std::string>& languages) {
  writer.StartObject();
  writer.Key(key);
  write_json_string_or_null(writer, evidence);
  writer.Key("languages");
  write_languages(writer, languages);
  writer.EndObject();
}

void write_evidence(JsonWriter& writer, const Evidence& evidence) {
  writer.StartObject();
  writer.Key("filename");
  write_strategy(writer, "name", evidence.name, evidence.by_filename);
  writer.Key("shebang");
  write_strategy(writer, "interpreter", evidence.interpreter, evidence.by_interpreter);
  writer.Key("extension");
  write_strategy(writer, "extension", evidence.extension, evidence.by_extension);
  writer.Key("candidates");
  write_languages(writer, evidence.candidates);
  writer.Key("tokens");
  writer.Uint64(evidence.token_count);
  writer.Key("min_tokens");
  writer.Uint64(evidence.min_tokens);
  writer.Key("min_score_per_token");
  write_number(writer, evidence.min_score_per_token);
  writer.Key("ranking");
  writer.StartArray();
  for (const RankedLanguage& entry : evidence.ranking) {
    writer.StartObject();
    writer.Key("language");
    write_json_string(writer, entry.language);
    writer.Key("score");
    write_number(writer, entry.score);
    writer.Key("score_per_token");
    write_number(writer, entry.score_per_token);
    writer.Key("above_floor");
    writer.Bool(entry.above_floor);
    writer.EndObject();
  }
  writer.EndArray();
  writer.Key("decision");
  write_json_string(writer, evidence.decision);
  writer.EndObject();
}

}  // namespace

std::string text_line(const InputItem& item, const FileResult& result) {
  std::string text = escaped(item.path) + '\t' + result.language + '\n';
  if (result.evidence) text += explanation_block(*result.evidence);
  return text;
}

std::string null_terminated_line(const InputItem& item, const FileResult& result) {
  return item.path + '\t' + result.language + '\0';
}

std::string json_line(const InputItem& item, const FileResult& result) {
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  writer.StartObject();
  writer.Key("path");
  write_json_string(writer, item.path);
  // JSON strings hold only Unicode; a path that is not UTF-8 also comes as its exact bytes.
  if (!tools::is_valid_utf8(item.path)) {
    writer.Key("path_base64");
    const std::string encoded = base64(item.path);
    writer.String(encoded.c_str(), static_cast<rapidjson::SizeType>(encoded.size()));
  }
  writer.Key("language");
  write_json_string_or_null(writer, result.language);
  if (result.evidence) {
    writer.Key("evidence");
    write_evidence(writer, *result.evidence);
  }
  writer.EndObject();
  return std::string(buffer.GetString(), buffer.GetSize()) + '\n';
}

std::string error_line(const InputItem& item, const FileResult& result) {
  return "lingomat: " + escaped(item.path) + ": " + result.error + '\n';
}

}  // namespace quillon::lingomat::cli
