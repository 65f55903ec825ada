// The command lines of lingomat-train and lingomat-eval, and what they refuse before any work.
#include <gtest/gtest.h>

#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::CommandResult;
using test_support::run_program;

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(ToolCommands, BadCommandLinesAreUsageErrors) {
  const std::string train = LINGOMAT_TRAIN_BINARY, eval = LINGOMAT_EVAL_BINARY;
  const std::vector<std::string> trains = {"defs", "samples", "-o", "out.json"};
  const auto with = [](std::vector<std::string> args, const std::vector<std::string>& extra) {
    args.insert(args.end(), extra.begin(), extra.end());
    return args;
  };
  const std::vector<std::tuple<std::string, std::vector<std::string>, std::string>> cases = {
      {train, {"defs", "samples"}, "missing --output FILE"},
      {train, {"defs"}, "missing argument SAMPLES"},
      {train, with(trains, {"--folds", "1"}), "--folds: expected at least 2"},
      {train, with(trains, {"--fold", "3"}), "--fold: expected 0 to 2, got 3"},
      {train, with(trains, {"--split", "held-out"}), "--split: expected train, test or all"},
      {train, with(trains, {"--whole", "--max-bytes", "9"}), "--whole cannot be combined"},
      {train, with(trains, {"--min-count", "0"}), "--min-count: expected at least 1"},
      {train, with(trains, {"--discriminative-epochs", "2", "--learning-rate", "0"}),
       "--learning-rate must be above 0"},
      {train, with(trains, {"--discriminative-epochs", "2", "--margin", "-1"}),
       "--margin must be from 0"},
      {train, with(trains, {"--margin", "3"}),
       "--learning-rate and --margin need --discriminative-epochs"},
      {eval, {"data.json", "samples", "--min-score", "low"}, "--min-score: expected a number"},
      {eval, {"data.json", "samples", "--restrict"}, "--restrict needs --only LANG"},
      {eval, {"data.json", "samples", "-j", "0"}, "--jobs: expected at least 1"},
      {train, with(trains, {"--threads", "2"}), "unknown option '--threads'"},
  };
  for (const auto& [program, args, message] : cases) {
    const CommandResult result = run_program(program, args);
    EXPECT_EQ(result.status, 2) << message;
    EXPECT_TRUE(contains(result.err, message)) << result.err << "\nlacks: " << message;
  }
  const CommandResult version = run_program(train, {"--version"});
  EXPECT_EQ(version.out, std::string("lingomat-train ") + LINGOMAT_VERSION + "\n");
}

TEST(ToolCommands, EvalRefusesUnusableDataFiles) {
  const test_support::TempDir dir;
  test_support::write_text(dir / "samples/C/p/a.c", "int x;\n");
  test_support::write_text(dir / "bad.json", "{\"filenames\": {}, ");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {dir / "none.json", "cannot read data file " + (dir / "none.json") + ": No such file"},
      {dir.path(), "cannot read data file " + dir.path() + ": Is a directory"},
      {"/dev/zero", "cannot read data file /dev/zero: not a regular file"},
      {dir / "bad.json", "data file " + (dir / "bad.json") + " is not usable: "},
  };
  for (const auto& [data, message] : cases) {
    const CommandResult result = run_program(LINGOMAT_EVAL_BINARY, {data, dir / "samples"});
    EXPECT_EQ(result.status, 1) << data;
    EXPECT_TRUE(contains(result.err, message)) << result.err << "\nlacks: " << message;
  }
}

}  // namespace
}  // namespace quillon::lingomat::tools
