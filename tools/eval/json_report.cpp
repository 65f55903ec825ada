#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "common/json_text.h"
#include "eval/eval_output.h"

namespace quillon::lingomat::tools {

namespace {

using Writer = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

void write_counts(Writer& writer, std::uint64_t files, std::uint64_t correct, std::uint64_t wrong,
                  std::uint64_t no_answer, double accuracy) {
  writer.Key("files");
  writer.Uint64(files);
  writer.Key("correct");
  writer.Uint64(correct);
  writer.Key("wrong");
  writer.Uint64(wrong);
  writer.Key("no_answer");
  writer.Uint64(no_answer);
  writer.Key("accuracy");
  writer.Double(accuracy);
}

void write_mode(Writer& writer, const ModeReport& mode) {
  writer.StartObject();
  writer.Key("mode");
  write_json_string(writer, mode.mode);
  writer.Key("description");
  write_json_string(writer, mode.description);
  write_counts(writer, mode.files, mode.correct, mode.wrong, mode.no_answer, mode.accuracy());
  writer.Key("language_accuracy");
  writer.Double(mode.language_accuracy());
  writer.Key("bytes");
  writer.Uint64(mode.bytes);
  writer.Key("engine_seconds");
  writer.Double(mode.seconds);
  writer.Key("files_per_second");
  writer.Double(mode.files_per_second());
  writer.Key("megabytes_per_second");
  writer.Double(mode.megabytes_per_second());

  writer.Key("languages");
  writer.StartArray();
  for (const LanguageReport& language : mode.languages) {
    writer.StartObject();
    writer.Key("language");
    write_json_string(writer, language.language);
    write_counts(writer, language.files, language.correct, language.wrong, language.no_answer,
                 language.accuracy());
    writer.Key("mistaken_for");
    if (language.mistaken_for_count > 0) {
      write_json_string(writer, language.mistaken_for);
    } else {
      writer.Null();
    }
    writer.Key("mistaken_for_count");
    writer.Uint64(language.mistaken_for_count);
    writer.EndObject();
  }
  writer.EndArray();

  writer.Key("confusions");
  writer.StartArray();
  for (const Confusion& confusion : mode.confusions) {
    writer.StartObject();
    writer.Key("expected");
    write_json_string(writer, confusion.expected);
    writer.Key("answer");
    write_json_string(writer, confusion.answer);
    writer.Key("count");
    writer.Uint64(confusion.count);
    writer.EndObject();
  }
  writer.EndArray();
  writer.EndObject();
}

const char* side_name(SplitSide side) {
  switch (side) {
    case SplitSide::kTrain:
      return "train";
    case SplitSide::kTest:
      return "test";
    case SplitSide::kAll:
      break;
  }
  return "all";
}

}  // namespace

std::string format_json_report(const EvalConfig& config, const EvalRun& run) {
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  writer.SetIndent(' ', 2);
  writer.StartObject();
  writer.Key("data_file");
  write_json_string(writer, config.data_path);
  writer.Key("samples");
  write_json_string(writer, config.samples_root);
  writer.Key("split");
  writer.String(side_name(config.split.side));
  writer.Key("folds");
  writer.Uint64(config.split.folds);
  writer.Key("fold");
  writer.Uint64(config.split.fold);

  writer.Key("engine_options");
  writer.StartObject();
  writer.Key("max_bytes");
  writer.Uint64(config.tokenizer.max_bytes);
  writer.Key("max_tokens");
  writer.Uint64(config.tokenizer.max_tokens);
  writer.Key("min_tokens");
  writer.Uint64(config.min_tokens);
  writer.Key("min_score");
  writer.Double(config.min_score_per_token);
  writer.EndObject();

  writer.Key("threads");
  writer.Uint(run.threads);
  writer.Key("wall_seconds");
  writer.Double(run.wall_seconds);
  writer.Key("untrained_languages");
  writer.StartArray();
  for (const std::string& name : run.untrained_languages) write_json_string(writer, name);
  writer.EndArray();

  writer.Key("modes");
  writer.StartArray();
  for (const ModeReport& mode : run.modes) write_mode(writer, mode);
  writer.EndArray();
  writer.EndObject();
  buffer.Put('\n');
  return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace quillon::lingomat::tools
