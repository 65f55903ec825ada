// Runs the built lingomat-train and lingomat-eval on a corpus written here.
#include <filesystem>
#include <map>

#include <rapidjson/document.h>

#include <gtest/gtest.h>

#include "common/split.h"
#include "engine/engine.h"
#include "sample_corpus.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::CommandResult;
using test_support::list_folder;
using test_support::read_text;
using test_support::run_program;
using test_support::write_text;

rapidjson::Document parse_strict(const std::string& json) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseValidateEncodingFlag>(json.c_str(), json.size());
  EXPECT_FALSE(document.HasParseError()) << json.substr(0, 200);
  return document;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class EndToEndTest : public ::testing::Test {
 protected:
  void SetUp() override {
    test_support::write_sample_corpus(samples());
    write_text(definitions(), test_support::sample_definitions());
    std::filesystem::create_directories(dir_ / "out");
  }

  std::string samples() const { return dir_ / "samples"; }
  std::string definitions() const { return dir_ / "languages.def"; }
  std::string output(const std::string& name = "data.json") const { return dir_ / ("out/" + name); }

  CommandResult train(std::vector<std::string> extra, const std::string& out) const {
    std::vector<std::string> args = {definitions(), samples(), "-o", out};
    args.insert(args.end(), extra.begin(), extra.end());
    return run_program(LINGOMAT_TRAIN_BINARY, args);
  }
  CommandResult evaluate(std::vector<std::string> extra) const {
    std::vector<std::string> args = {output(), samples()};
    args.insert(args.end(), extra.begin(), extra.end());
    return run_program(LINGOMAT_EVAL_BINARY, args);
  }
  void train_ok(std::vector<std::string> extra, const std::string& out) const {
    const CommandResult result = train(extra, out);
    ASSERT_EQ(result.status, 0) << result.err;
  }

  // The corpus files on the held-out side of fold 0 of 3, by the shared rule.
  static std::vector<test_support::CorpusFile> held_out_files() {
    std::map<std::string, std::vector<std::string>> projects;
    for (const auto& file : test_support::sample_corpus()) {
      auto& names = projects[file.language];
      if (std::find(names.begin(), names.end(), file.project) == names.end()) {
        names.push_back(file.project);
      }
    }
    std::vector<test_support::CorpusFile> held_out;
    for (const auto& file : test_support::sample_corpus()) {
      const auto test = test_projects(projects[file.language], 3, 0);
      if (std::find(test.begin(), test.end(), file.project) != test.end()) {
        held_out.push_back(file);
      }
    }
    return held_out;
  }

  test_support::TempDir dir_;
};

TEST_F(EndToEndTest, TrainedDataFileIdentifiesHeldOutSnippets) {
  train_ok({"--split", "train"}, output());
  const auto document = parse_strict(read_text(output()));
  for (const char* language : {"Python", "C", "Shell", "HTML"}) {
    EXPECT_EQ(document["languages"][language].GetInt(), 4) << language;  // 2 of 3 projects
  }
  EXPECT_FALSE(document["languages"].HasMember("Markdown"));

  Lingomat::Opts opts;
  opts.classifier.data_file = output();
  const Lingomat engine(opts);
  const auto held_out = held_out_files();
  ASSERT_EQ(held_out.size(), 8u);
  for (const auto& file : held_out) {
    EXPECT_EQ(engine.identify("", file.content), file.language) << file.relative_path;
  }
  EXPECT_EQ(engine.identify("README.md", ""), "Markdown");  // names-only language
}

TEST_F(EndToEndTest, OutputIsByteIdenticalWhateverTheThreadCount) {
  // A Latin-1 sample brings in a token that cannot be stored.
  write_text(samples() + "/C/latin1/caf.c", "int caf\xE9(void) { return 1; }\n");
  train_ok({"--jobs", "1"}, output("one.json"));
  train_ok({"-j", "4"}, output("four.json"));
  const std::string one = read_text(output("one.json"));
  EXPECT_EQ(one, read_text(output("four.json")));
  EXPECT_FALSE(parse_strict(one).HasParseError());
  EXPECT_FALSE(contains(one, "\xE9"));
  EXPECT_EQ(list_folder(dir_ / "out"), (std::vector<std::string>{"four.json", "one.json"}));
}

TEST_F(EndToEndTest, EvalJsonReportsBothModesOnTheHeldOutSide) {
  train_ok({"--split", "train"}, output());
  const CommandResult result = evaluate({"--split", "test", "--json", "--jobs", "2"});
  ASSERT_EQ(result.status, 0) << result.err;
  const auto report = parse_strict(result.out);
  ASSERT_TRUE(report.IsObject());
  EXPECT_STREQ(report["split"].GetString(), "test");
  EXPECT_EQ(report["threads"].GetInt(), 2);
  EXPECT_EQ(report["engine_options"]["min_tokens"].GetInt(), 40);
  const auto& modes = report["modes"];
  ASSERT_EQ(modes.Size(), 2u);
  EXPECT_STREQ(modes[0]["mode"].GetString(), "content");
  EXPECT_STREQ(modes[1]["mode"].GetString(), "filename");
  for (const auto& mode : modes.GetArray()) {
    EXPECT_EQ(mode["files"].GetInt(), 8);
    EXPECT_EQ(mode["correct"].GetInt(), 8) << mode["mode"].GetString();
    EXPECT_EQ(mode["wrong"].GetInt() + mode["no_answer"].GetInt(), 0);
    EXPECT_DOUBLE_EQ(mode["accuracy"].GetDouble(), 1.0);
    EXPECT_GT(mode["files_per_second"].GetDouble(), 0.0);
    ASSERT_EQ(mode["languages"].Size(), 4u);
    EXPECT_STREQ(mode["languages"][0]["language"].GetString(), "C");
    EXPECT_EQ(mode["languages"][0]["files"].GetInt(), 2);
  }
}

TEST_F(EndToEndTest, EvalSeparatesNoAnswerFromWrongAnswers) {
  // Trained on Python only: C files get no statistics-based answer in content mode,
  // and their ".c" names point to no language at all.
  train_ok({"--only", "Python"}, output());
  const CommandResult result = evaluate({"--only", "Python", "--only", "C", "--json"});
  ASSERT_EQ(result.status, 0) << result.err;
  const auto report = parse_strict(result.out);
  EXPECT_STREQ(report["untrained_languages"][0].GetString(), "C");
  const auto& named = report["modes"][1];
  const auto& c = named["languages"][0];
  EXPECT_STREQ(c["language"].GetString(), "C");
  EXPECT_EQ(c["files"].GetInt(), 6);
  EXPECT_EQ(c["correct"].GetInt(), 0);
  EXPECT_EQ(c["wrong"].GetInt() + c["no_answer"].GetInt(), 6);
  EXPECT_EQ(named["wrong"].GetInt() + named["no_answer"].GetInt() + named["correct"].GetInt(), 12);
}

TEST_F(EndToEndTest, EvalRestrictTellsTheEngineWhichLanguagesArePossible) {
  train_ok({}, output());
  // With only Shell allowed and no floor, every content answer must be Shell.
  const CommandResult result = evaluate(
      {"--only", "Shell", "--restrict", "--min-tokens", "1", "--min-score", "0", "--json"});
  ASSERT_EQ(result.status, 0) << result.err;
  const auto report = parse_strict(result.out);  // kept: the values below live in it
  const auto& content = report["modes"][0];
  EXPECT_GT(content["files"].GetInt(), 0);
  EXPECT_EQ(content["correct"].GetInt(), content["files"].GetInt());
  const CommandResult text = evaluate({"--only", "Shell", "--only", "C", "--restrict"});
  EXPECT_TRUE(contains(text.out, "restricted to the 2 languages evaluated")) << text.out;
}

TEST_F(EndToEndTest, EvalTextReportShowsTheTables) {
  train_ok({}, output());
  const CommandResult result = evaluate({"--min-tokens", "1", "--min-score", "0"});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(contains(result.out, "min-tokens 1, min-score 0")) << result.out;
  EXPECT_TRUE(contains(result.out, "== content only (no file name) =="));
  EXPECT_TRUE(contains(result.out, "== content and the file's own name =="));
  EXPECT_TRUE(contains(result.out, "files 24, correct 24 (100.0%)")) << result.out;
  EXPECT_TRUE(contains(result.out, "no answer"));
  EXPECT_TRUE(contains(result.out, "files/s"));
  EXPECT_TRUE(contains(result.out, "Shell "));
}

TEST_F(EndToEndTest, DiscriminativeTrainingWritesACheckedRecord) {
  const CommandResult trained = run_program(
      LINGOMAT_TRAIN_BINARY, {definitions(), samples(), "-o", output("adjusted.json"),
                              "--discriminative-epochs", "3", "--learning-rate", "0.25"});
  ASSERT_EQ(trained.status, 0) << trained.err;
  EXPECT_TRUE(contains(trained.out, "misranked with their project left out")) << trained.out;
  const auto document = parse_strict(read_text(output("adjusted.json")));
  const auto& record = document["calibration"]["discriminative"];
  EXPECT_EQ(record["epochs"].GetInt(), 3);
  EXPECT_STREQ(record["rate"].GetString(), "0.25");
  EXPECT_STREQ(record["margin"].GetString(), "0");
  // The divisors are chosen for resolution: far above the occurrences counted.
  train_ok({}, output("counted.json"));
  const auto counted = parse_strict(read_text(output("counted.json")));
  EXPECT_GT(document["language_tokens"]["C"].GetInt(), counted["language_tokens"]["C"].GetInt());
  EXPECT_EQ(document["calibration"]["counted_tokens"].GetInt(),
            counted["calibration"]["counted_tokens"].GetInt());
}

TEST_F(EndToEndTest, TrainingOptionsShapeTheDataFile) {
  train_ok({"--max-tokens", "5"}, output("short.json"));
  train_ok({"--whole"}, output("whole.json"));
  train_ok({}, output("default.json"));
  const auto short_doc = parse_strict(read_text(output("short.json")));
  const auto whole_doc = parse_strict(read_text(output("whole.json")));
  const auto default_doc = parse_strict(read_text(output("default.json")));
  for (const char* language : {"Python", "C", "Shell", "HTML"}) {
    EXPECT_LE(short_doc["language_tokens"][language].GetInt(), 5 * 6);
    // The corpus files are short, so the default limits see all of them.
    EXPECT_EQ(whole_doc["language_tokens"][language].GetInt(),
              default_doc["language_tokens"][language].GetInt());
  }

  train_ok({"--only", "Python", "--only", "Markdown"}, output("only.json"));
  const auto only = parse_strict(read_text(output("only.json")));
  EXPECT_EQ(only["languages"].MemberCount(), 1u);
  EXPECT_EQ(only["extnames"].MemberCount(), 2u);
  EXPECT_TRUE(only["filenames"].HasMember("Markdown"));

  train_ok({"--max-samples", "2", "--min-count", "3"}, output("small.json"));
  const auto small = parse_strict(read_text(output("small.json")));
  EXPECT_EQ(small["languages_total"].GetInt(), 8);
  for (const auto& language : small["tokens"].GetObject()) {
    for (const auto& token : language.value.GetObject()) EXPECT_GE(token.value.GetInt(), 3);
  }

  train_ok({"--max-tokens-per-language", "10"}, output("capped.json"));
  const auto capped = parse_strict(read_text(output("capped.json")));
  for (const auto& language : capped["tokens"].GetObject()) {
    EXPECT_EQ(language.value.MemberCount(), 10u);
  }
}

// Every bad input fails with a message naming the culprit, exit status 1, and
// leaves an existing output file exactly as it was.
TEST_F(EndToEndTest, BadTrainingInputLeavesTheOutputAlone) {
  const std::string previous = "previous data file";
  const auto expect_failure = [&](const std::vector<std::string>& extra,
                                  const std::string& message) {
    write_text(output(), previous);
    const CommandResult result = train(extra, output());
    EXPECT_EQ(result.status, 1) << message;
    EXPECT_TRUE(contains(result.err, message)) << result.err << "\nlacks: " << message;
    EXPECT_EQ(read_text(output()), previous);
    EXPECT_EQ(list_folder(dir_ / "out"), (std::vector<std::string>{"data.json"}));
  };

  write_text(samples() + "/Cobol/ledger/ledger.cob", "IDENTIFICATION DIVISION.\n");
  expect_failure({}, "samples folder " + samples() + "/Cobol is for the language 'Cobol', " +
                         "which definitions file " + definitions() + " does not define");
  std::filesystem::remove_all(samples() + "/Cobol");

  std::filesystem::create_directories(samples() + "/Markdown/empty-project");
  expect_failure({}, "language folder " + samples() + "/Markdown holds no sample file");
  std::filesystem::remove_all(samples() + "/Markdown");

  std::filesystem::create_symlink(dir_ / "gone.py", samples() + "/Python/webhooks/src/lost.py");
  expect_failure({}, "cannot read sample " + samples() +
                         "/Python/webhooks/src/lost.py: No such file or directory");
  std::filesystem::remove(samples() + "/Python/webhooks/src/lost.py");

  write_text(definitions(), "[Python]\nextensions = .py\n[C]\nextension = .c\n");
  expect_failure({}, definitions() + ":4: unknown key 'extension'");
  write_text(definitions(), test_support::sample_definitions());

  expect_failure({"--only", "Rust"}, "--only Rust: definitions file");

  const CommandResult missing =
      run_program(LINGOMAT_TRAIN_BINARY, {definitions(), dir_ / "nowhere", "-o", output()});
  EXPECT_EQ(missing.status, 1);
  EXPECT_TRUE(contains(missing.err, "samples folder " + (dir_ / "nowhere") + " does not exist"));

  const CommandResult no_folder = train({}, dir_ / "missing/data.json");
  EXPECT_EQ(no_folder.status, 1);
  EXPECT_TRUE(contains(no_folder.err, "cannot write output file " + (dir_ / "missing/data.json")));

  train_ok({}, output());  // and the fixed input trains again
}

TEST_F(EndToEndTest, BadCommandLinesAreUsageErrors) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{definitions(), samples()}, "missing --output FILE"},
      {{definitions(), samples(), "-o", output(), "--folds", "1"}, "--folds: expected at least 2"},
      {{definitions(), samples(), "-o", output(), "--whole", "--max-bytes", "9"},
       "--whole cannot be combined"},
      {{definitions(), samples(), "-o", output(), "--max-tokens", "lots"},
       "--max-tokens: expected a whole number"},
      {{definitions(), samples(), "-o", output(), "--min-count", "0"},
       "--min-count: expected at least 1"},
      {{definitions(), samples(), "-o", output(), "--max-singleton-bytes", "-3"},
       "--max-singleton-bytes: expected a whole number"},
      {{definitions(), samples(), "-o", output(), "--discriminative-epochs", "2", "--learning-rate",
        "0"},
       "--learning-rate must be above 0"},
      {{definitions(), samples(), "-o", output(), "--discriminative-epochs", "2", "--margin", "-1"},
       "--margin must be from 0"},
      {{definitions(), samples(), "-o", output(), "--margin", "3"},
       "--learning-rate and --margin need --discriminative-epochs"},
      {{definitions()}, "missing argument SAMPLES"},
  };
  for (const auto& [args, message] : cases) {
    const CommandResult result = run_program(LINGOMAT_TRAIN_BINARY, args);
    EXPECT_EQ(result.status, 2) << message;
    EXPECT_TRUE(contains(result.err, message)) << result.err;
  }
  EXPECT_FALSE(std::filesystem::exists(output()));

  const CommandResult help = run_program(LINGOMAT_TRAIN_BINARY, {"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_TRUE(contains(help.out, "--max-tokens-per-language"));
  const CommandResult eval_usage =
      run_program(LINGOMAT_EVAL_BINARY, {output(), samples(), "--min-score", "low"});
  EXPECT_EQ(eval_usage.status, 2);
  EXPECT_TRUE(contains(eval_usage.err, "--min-score: expected a number"));
  const CommandResult restrict_usage =
      run_program(LINGOMAT_EVAL_BINARY, {output(), samples(), "--restrict"});
  EXPECT_EQ(restrict_usage.status, 2);
  EXPECT_TRUE(contains(restrict_usage.err, "--restrict needs --only LANG"));
}

TEST_F(EndToEndTest, EvalRejectsUnusableDataFiles) {
  const CommandResult missing = evaluate({});
  EXPECT_EQ(missing.status, 1);
  EXPECT_TRUE(
      contains(missing.err, "cannot read data file " + output() + ": No such file or directory"))
      << missing.err;

  const CommandResult directory = run_program(LINGOMAT_EVAL_BINARY, {dir_.path(), samples()});
  EXPECT_EQ(directory.status, 1);
  EXPECT_TRUE(contains(directory.err, "cannot read data file " + dir_.path() + ": Is a directory"))
      << directory.err;
  const CommandResult device = run_program(LINGOMAT_EVAL_BINARY, {"/dev/zero", samples()});
  EXPECT_EQ(device.status, 1);
  EXPECT_TRUE(contains(device.err, "cannot read data file /dev/zero: not a regular file"))
      << device.err;

  write_text(output(), "{\"filenames\": {}, ");
  const CommandResult malformed = evaluate({});
  EXPECT_EQ(malformed.status, 1);
  EXPECT_TRUE(contains(malformed.err, "data file " + output() + " is not usable: "))
      << malformed.err;

  train_ok({}, output());
  const CommandResult no_tests = evaluate({"--only", "Markdown"});
  EXPECT_EQ(no_tests.status, 1);
  EXPECT_TRUE(contains(no_tests.err, "--only Markdown: samples folder")) << no_tests.err;
}

TEST(ToolConventions, EveryToolAnswersVersionAndHelpAndTakesJobs) {
  for (const std::string program : {LINGOMAT_TRAIN_BINARY, LINGOMAT_EVAL_BINARY}) {
    const std::string name = program.substr(program.rfind('/') + 1);
    const CommandResult version = run_program(program, {"--version"});
    EXPECT_EQ(version.status, 0) << name;
    EXPECT_EQ(version.out, name + " " + LINGOMAT_VERSION + "\n");
    const CommandResult help = run_program(program, {"--help"});
    EXPECT_TRUE(contains(help.out, "-j, --jobs N")) << help.out;
    EXPECT_TRUE(contains(help.out, "--version")) << help.out;
    EXPECT_EQ(run_program(program, {"--threads", "2"}).status, 2) << name;
    EXPECT_EQ(run_program(program, {"-j", "0"}).status, 2) << name;
  }
}

}  // namespace
}  // namespace quillon::lingomat::tools
