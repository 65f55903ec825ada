// Command-line options: conventions, validation and their effect on answers.
#include "cli_harness.h"

namespace lingomat_cli_test {
namespace {

using OptionsTest = CliTest;

TEST_F(OptionsTest, HelpGoesToStandardOutputWithTheDefaults) {
  for (const char* flag : {"--help", "-h"}) {
    const CliRun result = run({flag});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.rfind("Usage: lingomat", 0), 0u) << result.out;
    for (const char* shown : {"(default 10240)", "(default 500)", "(default 10)", "(default -7)",
                              "--only LANG", "--summary", "--explain"}) {
      EXPECT_NE(result.out.find(shown), std::string::npos) << shown;
    }
  }
}

TEST_F(OptionsTest, VersionComesFromTheProject) {
  const CliRun result = run({"--version"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.out, std::string("lingomat ") + LINGOMAT_VERSION + "\n");
  EXPECT_EQ(result.err, "");
}

struct BadArguments {
  std::vector<std::string> args;
  std::string mentioned;  // the stderr message must name this
};

TEST_F(OptionsTest, InvalidArgumentsAreUsageErrors) {
  const std::string file = write_file("x.al", "hi\n");
  const std::vector<BadArguments> cases = {
      {{"--max-bytes", "abc", file}, "--max-bytes"},
      {{"--max-bytes", "-1", file}, "--max-bytes"},
      {{"--max-bytes", "", file}, "--max-bytes"},
      {{"--max-tokens", "18446744073709551616", file}, "--max-tokens"},
      {{"--min-tokens", "1.5", file}, "--min-tokens"},
      {{"--min-tokens", " 4", file}, "--min-tokens"},
      {{"--min-score", "nan", file}, "--min-score"},
      {{"--min-score", "-inf", file}, "--min-score"},
      {{"--min-score", "1e999", file}, "--min-score"},
      {{"--min-score", "-8x", file}, "--min-score"},
      {{"--min-score", " -8", file}, "--min-score"},
      {{"-j", "0", file}, "--jobs"},
      {{"--jobs=100000", file}, "--jobs"},
      {{"-jx", file}, "--jobs"},
      {{"--only", "", file}, "--only"},
      {{"--frobnicate", file}, "--frobnicate"},
      {{"--json=yes", file}, "--json"},
      {{file, "--data"}, "--data"},
      {{}, "PATH"},
      {{"-", "-"}, "'-'"},
      {{"--name", "x.al", file}, "--name"},
      {{"--explain", "--summary", file}, "--summary"},
  };
  for (const BadArguments& bad : cases) {
    const CliRun result = run_with_data(bad.args);
    std::string shown;
    for (const std::string& arg : bad.args) shown += "[" + arg + "] ";
    EXPECT_EQ(result.exit_code, 2) << shown;
    EXPECT_EQ(result.out, "") << shown;
    EXPECT_EQ(result.err.rfind("lingomat: ", 0), 0u) << shown << result.err;
    EXPECT_NE(result.err.find(bad.mentioned), std::string::npos) << shown << result.err;
  }
}

TEST_F(OptionsTest, FloorsApplyToContentOnlyAnswers) {
  // Ten tokens are too few for the library's floor of 40, but the tool still answers.
  const std::string unnamed = write_file("x", words("beta", 10));
  EXPECT_EQ(run_with_data({unnamed}).out, unnamed + "\t\n");
  EXPECT_EQ(run_with_tool_defaults({unnamed}).out, unnamed + "\tBeta\n");
  // Among the candidates a name gives, the classifier decides whatever the floors.
  const std::string named = write_file("x.al", words("beta", 10));
  EXPECT_EQ(run_with_data({"--min-tokens", "51", "--min-score", "-0.1", named}).out,
            named + "\tBeta\n");
}

// A .pp file is a Puppet manifest or Pascal. Pascal's words are rare in its samples, so a
// Pascal text scores below every floor, yet far above Puppet.
TEST_F(OptionsTest, NameCandidatesAreRankedBelowTheFloors) {
  const std::string data = write_file("pp.json", R"json({
    "filenames": {}, "interpreters": {},
    "extnames": {"Puppet": [".pp"], "Pascal": [".pp", ".pas"]},
    "languages": {"Puppet": 1, "Pascal": 1},
    "language_tokens": {"Puppet": 100, "Pascal": 5000},
    "tokens": {"Puppet": {"class": 50, "{": 25, "}": 25},
               "Pascal": {"begin": 1, "end": 1, ";": 1}},
    "tokens_total": 100000, "languages_total": 2})json");
  const std::string pascal = write_file("unit.pp", words("begin ; end ;", 20));
  const std::string puppet = write_file("site.pp", words("class { }", 20));
  const std::string pascal_unnamed = write_file("unit", words("begin ; end ;", 20));
  const CliRun result = run({"--data", data, pascal, puppet, pascal_unnamed});
  // In path order; the unnamed Pascal text stays below the content-only floor.
  EXPECT_EQ(result.out, puppet + "\tPuppet\n" + pascal_unnamed + "\t\n" + pascal + "\tPascal\n");
  const CliRun explained = run({"--data", data, "--explain", pascal});
  EXPECT_NE(explained.out.find("decision     classifier"), std::string::npos) << explained.out;
  // With the library's floors applied to candidates too, Pascal falls back to Puppet.
  EXPECT_EQ(
      run({"--data", data, "--same-floors", "--min-tokens", "40", "--min-score", "-8", pascal}).out,
      pascal + "\tPuppet\n");
}

// Prose and code that score alike (-6.5 per token, between the floor of -7 and the prose
// floor of -6): only text that nothing names and that reads as prose goes unanswered.
TEST_F(OptionsTest, ProseThatNothingNamesGetsTheStricterFloor) {
  const std::string data = write_file("prose.json", R"json({
    "filenames": {}, "interpreters": {}, "extnames": {"Notes": [".notes"]},
    "languages": {"Notes": 1}, "language_tokens": {"Notes": 665},
    "tokens": {"Notes": {"the": 1, "of": 1, "licence": 1, "x": 1, "=": 1, ";": 1}},
    "tokens_total": 665, "languages_total": 1})json");
  const std::string prose = words("the licence of the licence", 10);
  const std::string code = words("x = x ;", 10);
  const std::string unnamed_prose = write_file("a", prose);
  const std::string unnamed_code = write_file("b", code);
  const std::string named_prose = write_file("c.notes", prose);
  EXPECT_EQ(run({"--data", data, unnamed_prose, unnamed_code, named_prose}).out,
            unnamed_prose + "\t\n" + unnamed_code + "\tNotes\n" + named_prose + "\tNotes\n");
  // A floor switched off stays off, prose or not; --same-floors gives prose none of its own.
  EXPECT_EQ(run({"--data", data, "--min-score", "0", unnamed_prose}).out,
            unnamed_prose + "\tNotes\n");
  EXPECT_EQ(run({"--data", data, "--same-floors", unnamed_prose}).out, unnamed_prose + "\tNotes\n");
}

TEST_F(OptionsTest, ValueFormsAreEquivalent) {
  const std::string file = write_file("x", words("beta", 50));
  const std::string expected = file + "\t\n";  // too few tokens: no answer
  EXPECT_EQ(run_with_data({"--min-tokens", "51", file}).out, expected);
  EXPECT_EQ(run_with_data({"--min-tokens=51", file}).out, expected);
  EXPECT_EQ(run_with_data({"-j2", "--min-tokens=51", file}).out, expected);
  // A negative value directly after its option is a value, not an option.
  EXPECT_EQ(run_with_data({"--min-score", "-0.1", file}).out, expected);
  // "--" ends the options, so a file may be called like one.
  const std::string odd = write_file("--json", words("beta", 50));
  const CliRun after_dashes = run_with_data({"--", odd});
  EXPECT_EQ(after_dashes.exit_code, 0) << after_dashes.err;
  EXPECT_EQ(after_dashes.out, odd + "\tBeta\n");
}

TEST_F(OptionsTest, EngineLimitsChangeTheAnswer) {
  const std::string file = write_file("x", words("beta", 50));
  EXPECT_EQ(run_with_data({file}).out, file + "\tBeta\n");
  // Each limit silences the classifier, and nothing names the file.
  EXPECT_EQ(run_with_data({"--max-tokens", "10", file}).out, file + "\t\n");
  EXPECT_EQ(run_with_data({"--max-bytes", "20", file}).out, file + "\t\n");
  EXPECT_EQ(run_with_data({"--min-tokens", "60", file}).out, file + "\t\n");
  EXPECT_EQ(run_with_data({"--min-score", "-0.1", file}).out, file + "\t\n");
  // And lifting them brings the classifier back.
  EXPECT_EQ(run_with_data({"--max-tokens", "0", "--max-bytes", "0", "--min-score", "0", file}).out,
            file + "\tBeta\n");
}

TEST_F(OptionsTest, OnlyRestrictsTheAnswers) {
  const std::string by_name = write_file("Alphafile", "hi\n");
  const std::string classified = write_file("y.txt", words("alpha", 50));
  // Alpha is not allowed: its name candidate is dropped, and the classifier may pick Beta only.
  const CliRun only_beta = run_with_data({"--only", "Beta", by_name, classified});
  EXPECT_EQ(only_beta.exit_code, 0);
  EXPECT_EQ(only_beta.out, by_name + "\t\n" + classified + "\tBeta\n");
  const CliRun both = run_with_data({"--only", "Beta", "--only=Alpha", by_name, classified});
  EXPECT_EQ(both.out, by_name + "\tAlpha\n" + classified + "\tAlpha\n");
}

}  // namespace
}  // namespace lingomat_cli_test
