// lingomat-check: its verdict on data files broken one way at a time, against the engine's.
#include <sys/stat.h>

#include <algorithm>
#include <exception>

#include <gtest/gtest.h>

#include "check/data_file_check.h"
#include "engine/engine.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::CommandResult;

// One member per line, so that a line number names the member.
const std::string kValid = R"({
 "filenames": {"Make": ["Makefile"]},
 "extnames": {"C": [".c"], "Python": [".py"]},
 "interpreters": {"Python": ["python"]},
 "languages": {"C": 2, "Python": 1, "Make": 1},
 "language_tokens": {"C": 5, "Python": 3, "Make": 1},
 "tokens": {"C": {"int": 3, ";": 2}, "Python": {"def": 3}, "Make": {"all": 1}},
 "tokens_total": 9,
 "languages_total": 4
}
)";

// `text` (kValid by default) with the first occurrence of `from` replaced by `to`.
std::string with(const std::string& from, const std::string& to, std::string text = kValid) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// kValid as the trainer writes it with --count-scale 2 --tokens-total 20: every token count
// doubled (C's are `c_counts`), "tokens_total" 20 / 2, and `record` under "calibration".
std::string calibrated(const std::string& record, const std::string& c_counts = "6, \";\": 4") {
  std::string text =
      with("\"int\": 3, \";\": 2}, \"Python\": {\"def\": 3}, \"Make\": {\"all\": 1",
           "\"int\": " + c_counts + "}, \"Python\": {\"def\": 6}, \"Make\": {\"all\": 2");
  text = with("\"tokens_total\": 9", "\"tokens_total\": 10", text);
  return text.replace(text.rfind('}'), 1, ",\n \"calibration\": " + record + "\n}");
}

bool engine_accepts(const std::string& text) {
  const test_support::TempFile file(text);
  Lingomat::Opts opts;
  opts.classifier.data_file = file.path();
  try {
    const Lingomat engine(opts);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

// Every problem as the command prints it, one per line.
std::string problems_of(const std::string& text) {
  const LineIndex lines(text);
  std::string printed;
  for (const Problem& problem : check_data_text(text).problems) {
    printed += format_problem("f", lines, problem) + "\n";
  }
  return printed;
}

// Whatever the engine refuses, the check reports at the place that is wrong; it also names what
// the engine would load and turn into nonsense, and warns of data the engine never uses.
TEST(DataFileCheck, ReportsWhatTheEngineRefusesAndWhatItWouldTurnIntoNonsense) {
  const std::string scaled = "{\"count_scale\": 2, \"tokens_total\": 20, \"counted_tokens\": 9";
  const std::string reweighted =
      scaled + ", \"discriminative\": {\"epochs\": 3, \"rate\": \"0.5\", \"margin\": \"0\"}}";
  const std::vector<std::tuple<std::string, bool, std::string>> cases = {
      // text, whether the engine refuses it, the problem reported ("": none)
      {kValid, false, ""},
      {kValid + std::string(1, '\0') + "garbage", false, ""},   // the engine stops at a NUL too
      {with("\"def\": 3", "\"d\\u0000e\xff\": 3"), false, ""},  // tokens may hold any bytes
      {calibrated(scaled + "}"), false, ""},
      {calibrated(reweighted, "9, \";\": 8"), false, ""},  // weights need not add up
      {kValid + "{}", true, "f:11:1: error: The document root must not be followed by other"},
      {"[1, 2]", true, "f:1:1: error: the root is not an object"},
      {with(" \"extnames\"", " \"extnamez\""), true, "f:1:1: error: the root has no \"extnames\""},
      {with("{\"Make\": [\"Makefile\"]}", "[]"), true, "f:2:15: error: \"filenames\" must be an"},
      {with("[\".c\"]", "[\".c\", 7]"), true, "f:3:27: error: an entry of the extnames of \"C\""},
      {with("\"Make\": {\"all\": 1}", "\"Mak\": {\"all\": 1}"), true,
       "f:5:37: error: \"Make\" has no entry in \"tokens\""},
      {with("\"C\": 5", "\"C\": 3000000000"), true, "f:6:27: error: the token count of \"C\" must"},
      {with("{\"def\": 3}", "[3]"), true, "f:7:48: error: the tokens of \"Python\" must be an obj"},
      {with("\"int\": 3", "\"int\": 1e0"), true, "f:7:26: error: the count of token \"int\""},
      {with("\"C\": 2", "\"C\": -2"), false, "f:5:21: error: the sample count of \"C\" is -2"},
      {with("\"C\": 5", "\"C\": 0"), false, "f:6:27: error: the token count of \"C\" is 0"},
      {with("\"tokens_total\": 9", "\"tokens_total\": 10"), false,
       "f:8:18: error: \"tokens_total\" is 10, but the counts of \"language_tokens\" add up to 9"},
      {with("\"int\": 3", "\"int\": 4"), false,
       "f:7:18: error: the token counts of \"C\" add up to 6, more than its \"language_tokens\""},
      {with("\"Make\": 1}", "\"Make\": 1, \"C\": 2}"), false,
       "f:5:48: error: duplicate member name \"C\" (first at line 5, column 16)"},
      {with("\"tokens_total\"", "\"x\": [{\"b\": [{\"d\": 1, \"d\": 1}]}],\n \"tokens_total\""),
       false, "f:8:24: error: duplicate member name \"d\""},
      {with("\"Make\": [", "\"Ma\\u0000ke\": ["), false, "f:2:16: error: language name \"Ma"},
      {with("\".py\"", "\".p\xffy\""), false,
       "f:3:39: error: extension \".p\xef\xbf\xbdy\" is not valid UTF-8"},
      {with("\"Makefile\"]", "\"Makefile\"], \"Zig\": [\"build.zig\"]"), false,
       "f:2:38: warning: \"Zig\" has names but no statistics"},
      {with("{\"Make\": [\"Makefile\"]}", "{}"), false,
       "f:5:37: warning: \"Make\" has statistics but no file name"},
      {with("\"Make\": 1},\n \"tokens\"", "\"Make\": 1, \"Go\": 4},\n \"tokens\""), false,
       "f:6:54: warning: \"Go\" in \"language_tokens\" is not in \"languages\""},
      // Without their record, scaled counts and re-estimated weights are too many.
      {with("\"int\": 3", "\"int\": 6"), false, "error: the token counts of \"C\" add up to 8"},
      {calibrated(scaled + "}", "9, \";\": 8"), false,
       "error: the token counts of \"C\" add up to"},
      {calibrated("{\"count_scale\": 2, \"tokens_total\": 30, \"counted_tokens\": 9}"), false,
       "error: \"tokens_total\" is 10, but the calibration's tokens_total divided by its "
       "count_scale gives 15"},
      {calibrated(scaled.substr(0, scaled.size() - 1) + "8}"), false,
       "error: the calibration's \"counted_tokens\" is 8, but the counts of \"language_tokens\""},
      // One token's weight may not exceed the count scale's.
      {calibrated(reweighted, "11, \";\": 8"), false,
       "error: the count of token \"int\" in \"C\" is 11, more than its \"language_tokens\" of 5 "
       "times the count scale 2"},
  };
  for (const auto& [text, refused, expected] : cases) {
    SCOPED_TRACE(expected.empty() ? text : expected);
    EXPECT_EQ(engine_accepts(text), !refused);
    const std::string problems = problems_of(text);
    EXPECT_NE(problems.find(expected), std::string::npos) << problems;
    if (expected.find("error: ") == std::string::npos) {  // a warning comes alone
      EXPECT_EQ(std::count(problems.begin(), problems.end(), '\n'), expected.empty() ? 0 : 1);
    }
  }
}

TEST(DataFileCheck, ReportsEveryProblemAndDeepNestingWithoutExhaustingTheStack) {
  const std::string text = with("\"all\": 1", "\"all\": 1, \"all\": 1",
                                with("\"def\": 3", "\"def\": 0", with("\"C\": 2", "\"C\": -2")));
  EXPECT_EQ(check_data_text(text).count(Severity::kError), 3u) << problems_of(text);

  const std::size_t depth = 200000;
  EXPECT_EQ(problems_of(std::string(depth, '[') + std::string(depth, ']')),
            "f:1:1: error: the root is not an object (Expected JSON value to be an object)\n");
  EXPECT_EQ(problems_of("{\"a\": " + std::string(depth, '[')).rfind("f:1:", 0), 0u);

  // Should the engine ever refuse what the text checks pass, that is reported too.
  CheckReport report;
  cross_check_with_engine("/nonexistent/lingomat.json", report);
  ASSERT_EQ(report.count(Severity::kError), 1u);
  EXPECT_EQ(report.problems[0].message.rfind("the engine refuses this file: ", 0), 0u);
}

TEST(CheckCommand, PrintsEveryProblemWithItsPlaceAndExitsByTheWorst) {
  const test_support::TempDir dir;
  const auto check = [](const std::vector<std::string>& args) {
    return test_support::run_program(LINGOMAT_CHECK_BINARY, args);
  };
  const std::string warned = dir / "warned.json", broken = dir / "broken.json";
  test_support::write_text(warned, with("\"Makefile\"]", "\"Makefile\"], \"Zig\": [\"z\"]"));
  test_support::write_text(broken, with("\"languages_total\": 4", "\"languages_total\": -4"));
  const CommandResult passed = check({warned}), failed = check({broken});
  EXPECT_EQ(passed.status, 0) << passed.err;
  EXPECT_EQ(passed.out.rfind(warned + ":2:38: warning: \"Zig\" has names", 0), 0u) << passed.out;
  EXPECT_NE(passed.out.find("\n" + warned + ": 0 errors, 1 warning\n"), std::string::npos);
  EXPECT_EQ(check({"--strict", warned}).status, 1);
  EXPECT_EQ(failed.status, 1);
  EXPECT_EQ(failed.out, broken + ":9:21: error: \"languages_total\" is -4; it must be positive\n" +
                            broken + ": 1 error, 0 warnings\n");

  // Nobody writes to this pipe: reading it would block forever.
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);
  for (const std::string& path : {dir / "absent.json", dir / "fifo", dir.path()}) {
    const CommandResult unreadable = check({path});
    EXPECT_EQ(unreadable.status, 1) << path;
    EXPECT_NE(unreadable.err.find("cannot read data file " + path + ": "), std::string::npos);
  }
}

}  // namespace
}  // namespace quillon::lingomat::tools
