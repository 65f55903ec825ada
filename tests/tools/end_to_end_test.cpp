// Runs the built lingomat-train and lingomat-eval on a small corpus generated here.
#include <filesystem>

#include <rapidjson/document.h>

#include <gtest/gtest.h>

#include "common/split.h"
#include "engine/engine.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::CommandResult;
using test_support::read_text;
using test_support::run_program;
using test_support::write_text;
using Strings = std::vector<std::string>;

// Every file of a language repeats the language's lines around names of its own ('%'), so
// a held-out project shares nothing with the trained ones but the language's syntax.
struct Language {
  std::string name, extension, lines;
};
const Language kLanguages[] = {
    {"Python", ".py", "def %(self, value):\n    return self.% + value\n"},
    // A Latin-1 byte gives a token the data file cannot store.
    {"C", ".c", "int %(struct node *head) {\n  return head->%; /* caf\xE9 */\n}\n"},
    {"Shell", ".sh", "if [ -z \"$%\" ]; then\n  echo % >&2\nfi\n"},
    {"HTML", ".html", "<div class=\"%\"><p>%</p></div>\n"},
};
const Strings kProjects = {"alpha", "bravo", "charlie"};
constexpr const char* kDefinitions =
    "[Python]\nextensions = .py\n[C]\nextensions = .c .h\n[Shell]\nextensions = .sh\n"
    "[HTML]\nextensions = .html\n# defined, but without samples\n[Markdown]\n"
    "extensions = .md\nfilenames = README.md\n";

std::string file_text(const Language& language, const std::string& stem) {
  std::string text;
  for (int i = 0; i < 8; ++i) {
    std::string lines = language.lines;
    for (std::size_t at; (at = lines.find('%')) != std::string::npos;) {
      lines.replace(at, 1, stem + "_" + std::to_string(i));
    }
    text += lines;
  }
  return text;
}

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
    for (const Language& language : kLanguages) {
      for (const std::string& project : kProjects) {
        for (const char* file : {"a", "b"}) {
          write_text(
              path("samples/" + language.name + "/" + project + "/" + file + language.extension),
              file_text(language, project + file));
        }
      }
    }
    write_text(path("languages.def"), kDefinitions);
  }

  std::string path(const std::string& relative) const { return dir_ / relative; }
  CommandResult train(const std::string& out, Strings extra = {}) const {
    extra.insert(extra.begin(), {path("languages.def"), path("samples"), "-o", out});
    return run_program(LINGOMAT_TRAIN_BINARY, extra);
  }
  // Trains into `name` below the test folder and returns the data file.
  rapidjson::Document trained(const std::string& name, const Strings& extra = {}) const {
    const CommandResult result = train(path(name), extra);
    EXPECT_EQ(result.status, 0) << result.err;
    return parse_strict(result.status == 0 ? read_text(path(name)) : "{}");
  }
  CommandResult evaluate(Strings extra) const {
    extra.insert(extra.begin(), {path("data.json"), path("samples")});
    return run_program(LINGOMAT_EVAL_BINARY, extra);
  }

  test_support::TempDir dir_;
};

TEST_F(EndToEndTest, TrainsTheSameBytesWhateverTheThreadsAndTheEngineNamesHeldOutFiles) {
  const auto document = trained("data.json", {"--split", "train", "-j", "1"});
  trained("four.json", {"--split", "train", "--jobs", "4"});
  const std::string bytes = read_text(path("data.json"));
  EXPECT_EQ(bytes, read_text(path("four.json")));
  EXPECT_FALSE(contains(bytes, "\xE9"));
  for (const Language& language : kLanguages) {
    EXPECT_EQ(document["languages"][language.name.c_str()].GetInt(), 4);  // 2 of 3 projects
  }
  Lingomat::Opts opts;
  opts.classifier.data_file = path("data.json");
  const Lingomat engine(opts);
  const auto held_out = test_projects(kProjects, 3, 0);
  ASSERT_EQ(held_out.size(), 1u);
  for (const Language& language : kLanguages) {
    for (const char* file : {"a", "b"}) {
      EXPECT_EQ(engine.identify("", file_text(language, held_out[0] + file)), language.name);
    }
  }
  EXPECT_EQ(engine.identify("README.md", ""), "Markdown");  // a language without samples

  const CommandResult json = evaluate({"--split", "test", "--json", "--jobs", "2"});
  ASSERT_EQ(json.status, 0) << json.err;
  const auto report = parse_strict(json.out);
  ASSERT_EQ(report["modes"].Size(), 2u);
  for (const auto& mode : report["modes"].GetArray()) {
    EXPECT_EQ(mode["correct"].GetInt(), 8) << mode["mode"].GetString();
    EXPECT_EQ(mode["files"].GetInt(), 8);
  }
}

TEST_F(EndToEndTest, EvalSeparatesNoAnswerFromWrongAndRestrictsToTheLanguagesAsked) {
  // Trained on Python only: C files get no statistics-based answer in content mode, and
  // their ".c" names point to no language at all.
  EXPECT_EQ(
      trained("data.json", {"--only", "Python", "--only", "Markdown"})["extnames"].MemberCount(),
      2u);
  const CommandResult result = evaluate({"--only", "Python", "--only", "C", "--json"});
  ASSERT_EQ(result.status, 0) << result.err;
  const auto report = parse_strict(result.out);
  EXPECT_STREQ(report["untrained_languages"][0].GetString(), "C");
  const auto& named = report["modes"][1];
  const auto& c = named["languages"][0];
  EXPECT_STREQ(c["language"].GetString(), "C");
  EXPECT_EQ(c["files"].GetInt(), 6);
  EXPECT_EQ(c["wrong"].GetInt() + c["no_answer"].GetInt(), 6);
  EXPECT_EQ(named["wrong"].GetInt() + named["no_answer"].GetInt() + named["correct"].GetInt(), 12);

  // With only Shell allowed and no floor, every content answer must be Shell.
  trained("data.json");
  const auto restricted = parse_strict(
      evaluate({"--only", "Shell", "--restrict", "--min-tokens", "1", "--min-score", "0", "--json"})
          .out);
  EXPECT_EQ(restricted["modes"][0]["correct"].GetInt(), 6);
  const CommandResult text = evaluate({"--only", "Shell", "--only", "C", "--restrict"});
  for (const char* part :
       {"restricted to the 2 languages evaluated", "== content only (no file name) ==",
        "== content and the file's own name ==", "files 12, correct "}) {
    EXPECT_TRUE(contains(text.out, part)) << text.out << "\nlacks: " << part;
  }
}

TEST_F(EndToEndTest, TrainingOptionsShapeTheDataFile) {
  const auto adjusted =
      trained("adjusted.json", {"--discriminative-epochs", "3", "--learning-rate", "0.25"});
  const auto& record = adjusted["calibration"]["discriminative"];
  EXPECT_EQ(record["epochs"].GetInt(), 3);
  EXPECT_STREQ(record["rate"].GetString(), "0.25");

  const auto shortened =
      trained("short.json", {"--max-tokens", "5", "--max-tokens-per-language", "3"});
  const auto rare_dropped = trained("rare.json", {"--max-samples", "2", "--min-count", "3"});
  EXPECT_EQ(rare_dropped["languages_total"].GetInt(), 8);  // 2 of 6 samples per language
  for (const Language& language : kLanguages) {
    const char* name = language.name.c_str();
    EXPECT_EQ(shortened["language_tokens"][name].GetInt(), 5 * 6);  // pruning keeps the total
    EXPECT_EQ(shortened["tokens"][name].MemberCount(), 3u);
    for (const auto& token : rare_dropped["tokens"][name].GetObject()) {
      EXPECT_GE(token.value.GetInt(), 3);
    }
  }
}

// Every bad input fails with status 1 and a message naming the culprit, and leaves an
// existing output file exactly as it was.
TEST_F(EndToEndTest, BadTrainingInputFailsAndLeavesTheOutputAlone) {
  const std::string samples = path("samples"), output = path("out/data.json");
  const auto expect_failure = [&](const std::string& message, Strings extra = {}) {
    write_text(output, "previous");
    const CommandResult result = train(output, extra);
    EXPECT_EQ(result.status, 1) << message;
    EXPECT_TRUE(contains(result.err, message)) << result.err << "\nlacks: " << message;
    EXPECT_EQ(test_support::list_folder(path("out")), Strings{"data.json"});
    EXPECT_EQ(read_text(output), "previous");
  };
  write_text(samples + "/Cobol/ledger/ledger.cob", "IDENTIFICATION DIVISION.\n");
  expect_failure("samples folder " + samples + "/Cobol is for the language 'Cobol', " +
                 "which definitions file " + path("languages.def") + " does not define");
  std::filesystem::remove_all(samples + "/Cobol");
  // A sample without a token would give a language the engine divides by zero for.
  write_text(samples + "/Markdown/notes/blank.md", "\n");
  expect_failure("data file that fails its check:\n  " + output + ":");
  std::filesystem::remove_all(samples + "/Markdown");
  std::filesystem::create_symlink(path("gone.py"), samples + "/Python/alpha/lost.py");
  expect_failure("cannot read sample " + samples + "/Python/alpha/lost.py: No such file");
  std::filesystem::remove(samples + "/Python/alpha/lost.py");
  expect_failure("--only Rust: definitions file", {"--only", "Rust"});
  write_text(path("languages.def"), "[Python]\nextensions = .py\n[C]\nextension = .c\n");
  expect_failure(path("languages.def") + ":4: unknown key 'extension'");
  write_text(path("languages.def"), kDefinitions);

  std::filesystem::rename(samples, path("elsewhere"));
  expect_failure("samples folder " + samples + " does not exist");
  std::filesystem::rename(path("elsewhere"), samples);
  const CommandResult no_folder = train(path("missing/data.json"));
  EXPECT_EQ(no_folder.status, 1);
  EXPECT_TRUE(contains(no_folder.err, "cannot write output file " + path("missing/data.json")));
  EXPECT_EQ(train(output).status, 0);  // and the mended input trains again
}

}  // namespace
}  // namespace quillon::lingomat::tools
