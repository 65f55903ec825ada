// lingomat-check's rules, on data files broken one way at a time.
#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "check/data_file_check.h"
#include "common/tool_error.h"
#include "engine/engine.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using lingomat::test_support::TempFile;

// One member per line, so that a line number names the member.
const std::string kValid =
    "{\n"
    " \"filenames\": {\"Make\": [\"Makefile\"]},\n"
    " \"extnames\": {\"C\": [\".c\"], \"Python\": [\".py\"]},\n"
    " \"interpreters\": {\"Python\": [\"python\"]},\n"
    " \"languages\": {\"C\": 2, \"Python\": 1, \"Make\": 1},\n"
    " \"language_tokens\": {\"C\": 5, \"Python\": 3, \"Make\": 1},\n"
    " \"tokens\": {\"C\": {\"int\": 3, \";\": 2}, \"Python\": {\"def\": 3}, \"Make\": {\"all\": "
    "1}},\n"
    " \"tokens_total\": 9,\n"
    " \"languages_total\": 4\n"
    "}\n";

// kValid with the first occurrence of `from` replaced by `to`.
std::string valid_with(const std::string& from, const std::string& to) {
  std::string text = kValid;
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

bool engine_accepts(const std::string& text) {
  const TempFile file(text);
  Lingomat::Opts opts;
  opts.classifier.data_file = file.path();
  try {
    const Lingomat engine(opts);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

std::vector<std::string> formatted(const std::string& text, Severity severity) {
  const CheckReport report = check_data_text(text);
  const LineIndex lines(text);
  std::vector<std::string> result;
  for (const Problem& problem : report.problems) {
    if (problem.severity == severity) result.push_back(format_problem("f", lines, problem));
  }
  return result;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

TEST(DataFileCheck, AValidFileHasNoProblemsAndTheEngineAgrees) {
  EXPECT_TRUE(check_data_text(kValid).problems.empty())
      << joined(formatted(kValid, Severity::kError));
  EXPECT_TRUE(engine_accepts(kValid));
}

// Whatever the engine refuses, the check reports as an error, at the place that is wrong.
TEST(DataFileCheck, ReportsEveryFileTheEngineRefuses) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "f:1:1: error: The document is empty."},
      {kValid + "{}", "f:11:1: error: The document root must not be followed by other values."},
      {"{\"filenames\": {", "f:1:16: error: Missing a name for object member."},
      {"[1, 2]", "f:1:1: error: the root is not an object"},
      {valid_with(" \"extnames\"", " \"extnamez\""), "f:1:1: error: the root has no \"extnames\""},
      {valid_with("\"filenames\": {\"Make\": [\"Makefile\"]}", "\"filenames\": []"),
       "f:2:15: error: \"filenames\" must be an object"},
      {valid_with("[\".c\"]", "[\".c\", 7]"), "f:3:27: error: an entry of the extnames of \"C\""},
      {valid_with("[\"python\"]", "\"python\""),
       "f:4:29: error: the interpreters of \"Python\" must be an array"},
      {valid_with(" \"languages\"", " \"languagez\""),
       "f:1:1: error: the root has no \"languages\""},
      {valid_with("\"Make\": {\"all\": 1}", "\"Mak\": {\"all\": 1}"),
       "f:5:37: error: \"Make\" has no entry in \"tokens\""},
      {valid_with("\"Python\": 3", "\"Pythn\": 3"),
       "f:5:24: error: \"Python\" has no entry in \"language_tokens\""},
      {valid_with("\"C\": 2", "\"C\": 2.0"), "f:5:21: error: the sample count of \"C\" must be"},
      {valid_with("\"C\": 5", "\"C\": 3000000000"), "f:6:27: error: the token count of \"C\" must"},
      {valid_with("\"Python\": {\"def\": 3}", "\"Python\": [3]"),
       "f:7:48: error: the tokens of \"Python\" must be an object"},
      {valid_with("\"tokens_total\": 9", "\"tokens_total\": \"9\""),
       "f:8:18: error: \"tokens_total\" must be an integer"},
      {valid_with("\"int\": 3", "\"int\": 1e0"), "f:7:26: error: the count of token \"int\""},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_FALSE(engine_accepts(text)) << expected;
    const std::vector<std::string> errors = formatted(text, Severity::kError);
    ASSERT_FALSE(errors.empty()) << text;
    EXPECT_EQ(errors.front().rfind(expected, 0), 0u) << joined(errors) << "expected " << expected;
  }
}

// The engine loads these without a word, then scores with infinities, wrapped counts or
// data nobody can see; the check names each.
TEST(DataFileCheck, ReportsNonsenseTheEngineAccepts) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {valid_with("\"C\": 2", "\"C\": -2"), "f:5:21: error: the sample count of \"C\" is -2"},
      {valid_with("\"C\": 5", "\"C\": 0"), "f:6:27: error: the token count of \"C\" is 0"},
      {valid_with("\"int\": 3", "\"int\": 0"), "f:7:26: error: the count of token \"int\""},
      {valid_with("\"tokens_total\": 9", "\"tokens_total\": 10"),
       "f:8:18: error: \"tokens_total\" is 10, but the counts of \"language_tokens\" add up to 9"},
      {valid_with("\"languages_total\": 4", "\"languages_total\": 0"),
       "f:9:21: error: \"languages_total\" is 0; it must be positive"},
      {valid_with("\"int\": 3", "\"int\": 4"),
       "f:7:18: error: the token counts of \"C\" add up to 6, more than its \"language_tokens\""},
      {valid_with("\"Make\": 1}", "\"Make\": 1, \"C\": 2}"),
       "f:5:48: error: duplicate member name \"C\" (first at line 5, column 16)"},
      {valid_with("\";\": 2", "\";\": 2, \"int\": 1"),
       "f:7:37: error: duplicate member name \"int\""},
      {valid_with("\"tokens_total\"",
                  "\"x\": {\"a\": [{\"b\": {\"c\": [{\"d\": 1, \"d\": 1}]}}]},\n "
                  "\"tokens_total\""),
       "f:8:36: error: duplicate member name \"d\""},
      {valid_with("\"Make\": [", "\"Ma\\u0000ke\": ["), "f:2:16: error: language name \"Ma"},
      {valid_with("\".py\"", "\".p\xffy\""),
       "f:3:39: error: extension \".p\xef\xbf\xbdy\" is not valid UTF-8"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_TRUE(engine_accepts(text)) << expected;
    const std::vector<std::string> errors = formatted(text, Severity::kError);
    ASSERT_FALSE(errors.empty()) << text;
    EXPECT_EQ(errors.front().rfind(expected, 0), 0u) << joined(errors) << "expected " << expected;
  }
}

TEST(DataFileCheck, WarnsOfDataTheEngineNeverUses) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {valid_with("\"Make\": [\"Makefile\"]", "\"Make\": [\"Makefile\"], \"Zig\": [\"build.zig\"]"),
       "f:2:38: warning: \"Zig\" has names but no statistics"},
      {valid_with("{\"Make\": [\"Makefile\"]}", "{}"),
       "f:5:37: warning: \"Make\" has statistics but no file name"},
      {valid_with("\"Make\": 1},\n \"tokens\"", "\"Make\": 1, \"Go\": 4},\n \"tokens\""),
       "f:6:54: warning: \"Go\" in \"language_tokens\" is not in \"languages\""},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_TRUE(formatted(text, Severity::kError).empty()) << expected;
    const std::vector<std::string> warnings = formatted(text, Severity::kWarning);
    ASSERT_EQ(warnings.size(), 1u) << joined(warnings);
    EXPECT_EQ(warnings.front().rfind(expected, 0), 0u) << warnings.front();
  }
}

// kValid as the trainer writes it with --count-scale 2 --tokens-total 20: every token count
// doubled, "tokens_total" = 20 / 2, and the record of both under "calibration".
std::string calibrated(const std::string& record) {
  std::string text =
      valid_with("{\"int\": 3, \";\": 2}, \"Python\": {\"def\": 3}, \"Make\": {\"all\": 1}",
                 "{\"int\": 6, \";\": 4}, \"Python\": {\"def\": 6}, \"Make\": {\"all\": 2}");
  text.replace(text.find("\"tokens_total\": 9"), 17, "\"tokens_total\": 10");
  text.replace(text.rfind('}'), 1, ",\n \"calibration\": " + record + "\n}");
  return text;
}

TEST(DataFileCheck, ACalibratedFileIsCheckedAgainstItsRecord) {
  const std::string record = "{\"count_scale\": 2, \"tokens_total\": 20, \"counted_tokens\": 9}";
  const std::string text = calibrated(record);
  EXPECT_TRUE(check_data_text(text).problems.empty()) << joined(formatted(text, Severity::kError));
  EXPECT_TRUE(engine_accepts(text));

  const std::vector<std::pair<std::string, std::string>> cases = {
      // Without the record the doubled counts are nonsense.
      {valid_with("\"int\": 3", "\"int\": 6"), "the token counts of \"C\" add up to 8"},
      {calibrated("{\"count_scale\": 1, \"tokens_total\": 20, \"counted_tokens\": 9}"),
       "the token counts of \"C\" add up to 10, more than its \"language_tokens\" of 5 ("},
      {calibrated("{\"count_scale\": 2, \"tokens_total\": 30, \"counted_tokens\": 9}"),
       "\"tokens_total\" is 10, but the calibration's tokens_total divided by its count_scale "
       "gives 15"},
      {calibrated("{\"count_scale\": 2, \"tokens_total\": 20, \"counted_tokens\": 8}"),
       "the calibration's \"counted_tokens\" is 8, but the counts of \"language_tokens\" add "
       "up to 9"},
      {calibrated("{\"count_scale\": 0, \"tokens_total\": 20, \"counted_tokens\": 9}"),
       "\"calibration\" needs \"count_scale\", an integer from 1 to 2147483647"},
      {calibrated("[]"), "\"calibration\" needs \"count_scale\""},
  };
  for (const auto& [broken, expected] : cases) {
    const std::vector<std::string> errors = formatted(broken, Severity::kError);
    ASSERT_FALSE(errors.empty()) << broken;
    EXPECT_NE(joined(errors).find(expected), std::string::npos)
        << joined(errors) << "expected " << expected;
  }
}

// Counts that encode re-estimated weights: each token's count is its weight's
// exp(weight) times "language_tokens", so a language's counts need not add up to it.
std::string reweighted(const std::string& record, const std::string& c_counts) {
  std::string text = calibrated(record);
  const std::string counted = "{\"int\": 6, \";\": 4}";
  text.replace(text.find(counted), counted.size(), c_counts);
  return text;
}

TEST(DataFileCheck, ReweightedCountsAreCheckedAgainstTheirRecord) {
  const std::string record =
      "{\"count_scale\": 2, \"tokens_total\": 20, \"counted_tokens\": 9, "
      "\"discriminative\": {\"epochs\": 3, \"rate\": \"0.5\", \"margin\": \"0\"}}";
  const std::string text = reweighted(record, "{\"int\": 9, \";\": 8}");
  EXPECT_TRUE(check_data_text(text).problems.empty()) << joined(formatted(text, Severity::kError));
  EXPECT_TRUE(engine_accepts(text));

  const std::vector<std::pair<std::string, std::string>> cases = {
      // Without the discriminative record the same counts are too many.
      {reweighted("{\"count_scale\": 2, \"tokens_total\": 20, \"counted_tokens\": 9}",
                  "{\"int\": 9, \";\": 8}"),
       "the token counts of \"C\" add up to 17"},
      // One token's weight may not exceed the count scale's.
      {reweighted(record, "{\"int\": 11, \";\": 8}"),
       "the count of token \"int\" in \"C\" is 11, more than its \"language_tokens\" of 5 "
       "times the count scale 2"},
      {reweighted("{\"count_scale\": 2, \"tokens_total\": 20, \"counted_tokens\": 9, "
                  "\"discriminative\": {\"epochs\": 0}}",
                  "{\"int\": 9, \";\": 8}"),
       "\"discriminative\" needs \"epochs\", an integer from 1 to 2147483647"},
      {reweighted("{\"count_scale\": 2, \"tokens_total\": 20, \"counted_tokens\": 9, "
                  "\"discriminative\": []}",
                  "{\"int\": 9, \";\": 8}"),
       "\"discriminative\" needs \"epochs\""},
      // Everything else is still checked.
      {reweighted("{\"count_scale\": 2, \"tokens_total\": 30, \"counted_tokens\": 9, "
                  "\"discriminative\": {\"epochs\": 3}}",
                  "{\"int\": 9, \";\": 8}"),
       "\"tokens_total\" is 10, but the calibration's tokens_total divided by its count_scale "
       "gives 15"},
      {reweighted(record, "{\"int\": 9, \";\": 0}"), "counts must be at least 1"},
  };
  for (const auto& [broken, expected] : cases) {
    const std::vector<std::string> errors = formatted(broken, Severity::kError);
    ASSERT_FALSE(errors.empty()) << broken;
    EXPECT_NE(joined(errors).find(expected), std::string::npos)
        << joined(errors) << "expected " << expected;
  }
}

// Tokens are bytes the tokenizer may produce from any input, not names.
TEST(DataFileCheck, TokensMayHoldAnyBytes) {
  const std::string text = valid_with("\"def\": 3", "\"d\\u0000e\xff\": 3");
  EXPECT_TRUE(check_data_text(text).problems.empty()) << joined(formatted(text, Severity::kError));
}

TEST(DataFileCheck, ReportsEveryProblemNotJustTheFirst) {
  std::string text = valid_with("\"C\": 2", "\"C\": -2");
  text.replace(text.find("\"def\": 3"), 8, "\"def\": 0");
  text.replace(text.find("\"all\": 1"), 8, "\"all\": 1, \"all\": 1");
  EXPECT_EQ(check_data_text(text).count(Severity::kError), 3u)
      << joined(formatted(text, Severity::kError));
}

TEST(DataFileCheck, DeepNestingIsReportedWithoutExhaustingTheStack) {
  const std::size_t depth = 200000;
  const std::string closed = std::string(depth, '[') + std::string(depth, ']');
  EXPECT_EQ(formatted(closed, Severity::kError),
            std::vector<std::string>{"f:1:1: error: the root is not an object (Expected JSON "
                                     "value to be an object)"});
  const std::string open = "{\"a\": " + std::string(depth, '[');
  const std::vector<std::string> errors = formatted(open, Severity::kError);
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors.front().rfind("f:1:", 0), 0u);
}

TEST(DataFileCheck, ContentAfterANulByteIsIgnoredAsTheEngineDoes) {
  const std::string text = kValid + std::string(1, '\0') + "garbage";
  EXPECT_TRUE(check_data_text(text).problems.empty());
  EXPECT_TRUE(engine_accepts(text));
}

// The trainer's guard: errors stop the write and are listed; warnings do not.
TEST(RequireValidDataFile, ThrowsWithEveryErrorAndPassesWarnings) {
  EXPECT_NO_THROW(require_valid_data_file(kValid, "out.json"));
  EXPECT_NO_THROW(require_valid_data_file(
      valid_with("\"Make\": [\"Makefile\"]", "\"Make\": [\"Makefile\"], \"Zig\": [\"z\"]"),
      "out.json"));
  std::string bad = valid_with("\"C\": 5", "\"C\": 0");
  bad.replace(bad.find("\"tokens_total\": 9"), 17, "\"tokens_total\": -1");
  try {
    require_valid_data_file(bad, "out.json");
    FAIL() << "a data file with errors was let through";
  } catch (const ToolError& error) {
    const std::string message = error.what();
    EXPECT_NE(message.find("\n  out.json:6:27: error: the token count of \"C\" is 0"),
              std::string::npos)
        << message;
    EXPECT_NE(message.find("\n  out.json:8:18: error: \"tokens_total\" is -1"), std::string::npos)
        << message;
  }
}

TEST(EngineCrossCheck, ReportsTheEnginesRefusal) {
  CheckReport report;
  cross_check_with_engine("/nonexistent/lingomat.json", report);
  ASSERT_EQ(report.count(Severity::kError), 1u);
  EXPECT_EQ(report.problems.front().message.rfind("the engine refuses this file: ", 0), 0u);

  const TempFile valid(kValid);
  CheckReport clean;
  cross_check_with_engine(valid.path(), clean);
  EXPECT_TRUE(clean.problems.empty());
}

}  // namespace
}  // namespace quillon::lingomat::tools
