// Output formats: plain lines, JSON lines, explanations and the summary table.
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include "cli_harness.h"

namespace lingomat_cli_test {
namespace {

rapidjson::Document parse_json(const std::string& line) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseValidateEncodingFlag>(line.c_str(), line.size());
  EXPECT_FALSE(document.HasParseError())
      << rapidjson::GetParseError_En(document.GetParseError()) << " in: " << line;
  EXPECT_TRUE(document.IsObject()) << line;
  return document;
}

using OutputTest = CliTest;

TEST_F(OutputTest, PrintsPathTabLanguageAndKeepsEmptyAnswers) {
  const std::string classified = write_file("x.al", words("beta", 50));
  const std::string by_name = write_file("Alphafile", "hi\n");
  const std::string unknown = write_file("notes.zz", "hello\n");
  const CliRun result = run_with_data({unknown, classified, by_name});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.err, "");
  // Sorted by path; the unknown file is listed with nothing after the tab.
  EXPECT_EQ(result.out, by_name + "\tAlpha\n" + unknown + "\t\n" + classified + "\tBeta\n");
}

TEST_F(OutputTest, ShebangInterpreterNamesTheLanguage) {
  const std::string script = write_file("run", "#!/usr/bin/env betash\necho\n");
  EXPECT_EQ(run_with_data({script}).out, script + "\tBeta\n");
}

TEST_F(OutputTest, PlainOutputEscapesBytesThatWouldBreakItsLines) {
  const std::string odd = write_file("tab\there\\new\nline\r.al", "hi\n");
  const std::string escaped = path("tab\\there\\\\new\\nline\\r.al");
  const CliRun result = run_with_data({odd});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.out, escaped + "\tAlpha\n");
  // JSON keeps the exact bytes.
  const CliRun json = run_with_data({"--json", odd});
  EXPECT_EQ(parse_json(lines_of(json.out).at(0))["path"].GetString(), odd);
  // Error lines stay single lines too.
  const CliRun missing = run_with_data({path("gone\n.al")});
  EXPECT_EQ(missing.err, "lingomat: " + path("gone\\n.al") + ": No such file or directory\n");
}

TEST_F(OutputTest, PlainOutputEscapesControlCharactersSoPathsCannotDriveTheTerminal) {
  // An escape sequence, a bell, DEL and a C1 CSI (U+009B), beside ordinary UTF-8 whose
  // continuation bytes fall in the same range ("\xC4\x80" is U+0100).
  write_file("tree/\x1b[31mred\a\x7f\xC2\x9B.al", "hi\n");
  write_file("tree/\xC4\x80.al", "hi\n");
  const CliRun walked = run_with_data({path("tree")});
  EXPECT_EQ(walked.exit_code, 0) << walked.err;
  EXPECT_EQ(walked.out, path("tree/\\x1b[31mred\\x07\\x7f\\xc2\\x9b.al") + "\tAlpha\n" +
                            path("tree/\xC4\x80.al") + "\tAlpha\n");
  const CliRun missing = run_with_data({path("\x1b]0;title\x07")});
  EXPECT_EQ(missing.err,
            "lingomat: " + path("\\x1b]0;title\\x07") + ": No such file or directory\n");
}

TEST_F(OutputTest, StandardInputUsesTheGivenName) {
  EXPECT_EQ(run_with_data({"--name", "Alphafile", "-"}, "hi\n").out, "-\tAlpha\n");
  // Only the last component counts, since name lookups match bare file names.
  EXPECT_EQ(run_with_data({"--name", "some/dir/Alphafile", "-"}, "hi\n").out, "-\tAlpha\n");
  EXPECT_EQ(run_with_data({"-"}, words("beta", 50)).out, "-\tBeta\n");
  EXPECT_EQ(run_with_data({"-"}, "").out, "-\t\n");
}

TEST_F(OutputTest, JsonLinesAreValidAndUseNullForNoAnswer) {
  const std::string known = write_file("x.al", words("alpha", 50));
  const std::string unknown = write_file("notes.zz", "hello\n");
  const std::string quoted = write_file("we\"ird\\name\t.al", "hi\n");
  const CliRun result = run_with_data({"--json", known, unknown, quoted});
  ASSERT_EQ(result.exit_code, 0) << result.err;
  const auto lines = lines_of(result.out);
  ASSERT_EQ(lines.size(), 3u);
  for (const std::string& line : lines) {
    const auto document = parse_json(line);
    ASSERT_TRUE(document.IsObject());
    EXPECT_TRUE(document["path"].IsString());
    EXPECT_TRUE(document["language"].IsString() || document["language"].IsNull());
    EXPECT_FALSE(document.HasMember("evidence"));
  }
  EXPECT_EQ(parse_json(lines[0])["path"].GetString(), unknown);
  EXPECT_TRUE(parse_json(lines[0])["language"].IsNull());
  EXPECT_EQ(parse_json(lines[1])["path"].GetString(), quoted);
  EXPECT_STREQ(parse_json(lines[2])["language"].GetString(), "Alpha");
}

TEST_F(OutputTest, JsonStaysValidForFileNamesThatAreNotUtf8) {
  write_file("tree/caf\xE9.al", "hi\n");
  write_file("tree/ok\xC3\xA9.al", "hi\n");
  const CliRun result = run_with_data({"--json", path("tree")});
  ASSERT_EQ(result.exit_code, 0) << result.err;
  const auto lines = lines_of(result.out);
  ASSERT_EQ(lines.size(), 2u);
  for (const std::string& line : lines) parse_json(line);
  // Valid UTF-8 passes through untouched.
  EXPECT_EQ(parse_json(lines[1])["path"].GetString(), path("tree/ok\xC3\xA9.al"));
}

TEST_F(OutputTest, JsonEvidenceShowsStrategiesAndRanking) {
  const std::string file = write_file("x.al", words("beta", 50));
  const CliRun result = run_with_data({"--json", "--explain", file});
  ASSERT_EQ(result.exit_code, 0) << result.err;
  const auto document = parse_json(lines_of(result.out).at(0));
  EXPECT_STREQ(document["language"].GetString(), "Beta");
  const auto& evidence = document["evidence"];
  ASSERT_TRUE(evidence.IsObject());
  EXPECT_STREQ(evidence["filename"]["name"].GetString(), "x.al");
  EXPECT_EQ(evidence["filename"]["languages"].Size(), 0u);
  EXPECT_TRUE(evidence["shebang"]["interpreter"].IsNull());
  EXPECT_STREQ(evidence["extension"]["extension"].GetString(), ".al");
  const auto& by_extension = evidence["extension"]["languages"];
  ASSERT_EQ(by_extension.Size(), 2u);
  EXPECT_STREQ(by_extension[0].GetString(), "Alpha");
  EXPECT_STREQ(by_extension[1].GetString(), "Beta");
  EXPECT_EQ(evidence["candidates"].Size(), 2u);
  EXPECT_EQ(evidence["tokens"].GetUint64(), 50u);
  const auto& ranking = evidence["ranking"];
  ASSERT_EQ(ranking.Size(), 2u);
  EXPECT_STREQ(ranking[0]["language"].GetString(), "Beta");
  EXPECT_STREQ(ranking[1]["language"].GetString(), "Alpha");
  EXPECT_GT(ranking[0]["score"].GetDouble(), ranking[1]["score"].GetDouble());
  EXPECT_DOUBLE_EQ(ranking[0]["score_per_token"].GetDouble(),
                   ranking[0]["score"].GetDouble() / 50.0);
  EXPECT_TRUE(ranking[0]["above_floor"].GetBool());
  EXPECT_STREQ(evidence["decision"].GetString(), "classifier");
}

TEST_F(OutputTest, ExplanationMarksLanguagesBelowTheFloor) {
  const std::string file = write_file("x", words("beta", 50));
  // Beta scores about -0.24 per token, Alpha about -5.3: a floor of -1 drops Alpha only.
  const CliRun result = run_with_data({"--json", "--explain", "--min-score", "-1", file});
  const auto document = parse_json(lines_of(result.out).at(0));
  const auto& ranking = document["evidence"]["ranking"];
  ASSERT_EQ(ranking.Size(), 2u);
  EXPECT_TRUE(ranking[0]["above_floor"].GetBool());
  EXPECT_FALSE(ranking[1]["above_floor"].GetBool());
}

// The explanation reports what identify() did, restrictions and floor included.
TEST_F(OutputTest, ExplanationAgreesWithTheAnswerUnderOnly) {
  const std::string file = write_file("x", words("alpha", 50));
  const CliRun result =
      run_with_data({"--json", "--explain", "--only", "Beta", "--min-score", "-1", file});
  ASSERT_EQ(result.exit_code, 0) << result.err;
  const auto document = parse_json(lines_of(result.out).at(0));
  const auto& evidence = document["evidence"];
  EXPECT_EQ(evidence["candidates"].Size(), 0u);
  EXPECT_DOUBLE_EQ(evidence["min_score_per_token"].GetDouble(), -1.0);
  const auto& ranking = evidence["ranking"];
  ASSERT_EQ(ranking.Size(), 1u);
  EXPECT_STREQ(ranking[0]["language"].GetString(), "Beta");
  // "alpha" is unseen in Beta: about -5.3 per token, below the floor of -1.
  EXPECT_FALSE(ranking[0]["above_floor"].GetBool());
  EXPECT_TRUE(document["language"].IsNull());
  EXPECT_STREQ(evidence["decision"].GetString(), "none");
  // Among name candidates that floor does not apply.
  const std::string named = write_file("x.al", words("alpha", 50));
  const auto with_name = parse_json(
      lines_of(
          run_with_data({"--json", "--explain", "--only", "Beta", "--min-score", "-1", named}).out)
          .at(0));
  EXPECT_DOUBLE_EQ(with_name["evidence"]["min_score_per_token"].GetDouble(), 0.0);
  EXPECT_STREQ(with_name["evidence"]["decision"].GetString(), "classifier");
}

TEST_F(OutputTest, TextExplanationFollowsEachLine) {
  const std::string short_file = write_file("Alphafile", " \n");
  const CliRun result = run_with_data({"--explain", short_file});
  ASSERT_EQ(result.exit_code, 0) << result.err;
  const auto lines = lines_of(result.out);
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], short_file + "\tAlpha");
  EXPECT_NE(result.out.find("filename     Alphafile: Alpha\n"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("too few tokens"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("decision     first candidate\n"), std::string::npos) << result.out;
}

TEST_F(OutputTest, SummaryTotalsBytesPerLanguageBiggestFirst) {
  const std::string beta = words("beta", 50);     // 250 bytes
  const std::string alpha = words("alpha", 100);  // 600 bytes
  write_file("tree/a.be", beta);
  write_file("tree/b.be", beta);
  write_file("tree/sub/c.al", alpha);
  write_file("tree/d.zz", "x\n");
  const CliRun result = run_with_data({"--summary", path("tree")});
  ASSERT_EQ(result.exit_code, 0) << result.err;
  const auto lines = lines_of(result.out);
  ASSERT_EQ(lines.size(), 5u) << result.out;
  EXPECT_EQ(lines[0].rfind("language", 0), 0u);
  EXPECT_EQ(lines[1].rfind("Alpha ", 0), 0u) << result.out;
  EXPECT_NE(lines[1].find(" 1 "), std::string::npos);
  EXPECT_NE(lines[1].find(" 600 "), std::string::npos);
  EXPECT_EQ(lines[2].rfind("Beta ", 0), 0u) << result.out;
  EXPECT_NE(lines[2].find(" 500 "), std::string::npos);
  EXPECT_EQ(lines[3].rfind("(unidentified) ", 0), 0u) << result.out;
  EXPECT_EQ(lines[4].rfind("total ", 0), 0u);
  EXPECT_NE(lines[4].find(" 1102 "), std::string::npos);
  EXPECT_NE(lines[4].find("100.00%"), std::string::npos);
}

TEST_F(OutputTest, JsonSummaryGivesSharesThatAddUp) {
  write_file("tree/a.be", words("beta", 50));
  write_file("tree/c.al", words("alpha", 100));
  const CliRun result = run_with_data({"--summary", "--json", path("tree")});
  ASSERT_EQ(result.exit_code, 0) << result.err;
  const auto lines = lines_of(result.out);
  ASSERT_EQ(lines.size(), 2u);
  const auto first = parse_json(lines[0]);
  const auto second = parse_json(lines[1]);
  EXPECT_STREQ(first["language"].GetString(), "Alpha");
  EXPECT_EQ(first["bytes"].GetUint64(), 600u);
  EXPECT_EQ(second["files"].GetUint64(), 1u);
  EXPECT_NEAR(first["share"].GetDouble() + second["share"].GetDouble(), 1.0, 1e-12);
}

}  // namespace
}  // namespace lingomat_cli_test
