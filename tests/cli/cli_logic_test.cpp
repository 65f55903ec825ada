// The tool's logic called in-process, through its library: the command line and the
// explanation it draws from the engine's record. The other CLI tests run the binary.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli_options.h"
#include "explanation.h"
#include "language_catalog.h"
#include "prose_test.h"

namespace quillon::lingomat::cli {
namespace {

ParsedCommandLine parse(std::vector<const char*> args) {
  args.insert(args.begin(), "lingomat");
  return parse_command_line(static_cast<int>(args.size()), args.data());
}

TEST(CliCommandLine, StartsFromTheSharedLimitsAndTheToolsOwnFloors) {
  const ParsedCommandLine parsed = parse({"a.c"});
  ASSERT_EQ(parsed.action, CommandAction::kRun);
  EXPECT_EQ(parsed.options.max_bytes, defaults::kMaxBytes);
  EXPECT_EQ(parsed.options.max_tokens, defaults::kMaxTokens);
  EXPECT_EQ(parsed.options.min_tokens, kDefaultMinTokens);
  EXPECT_EQ(parsed.options.min_score, kDefaultMinScore);
  EXPECT_EQ(parsed.options.paths, std::vector<std::string>{"a.c"});
}

TEST(CliCommandLine, ReadsValuesInEitherSpellingAndRepeats) {
  const ParsedCommandLine parsed =
      parse({"--only", "C", "--only=Python", "--max-bytes=7", "-j", "3", "--explain", "-", "x"});
  ASSERT_EQ(parsed.action, CommandAction::kRun) << parsed.error;
  EXPECT_EQ(parsed.options.only, (std::vector<std::string>{"C", "Python"}));
  EXPECT_EQ(parsed.options.max_bytes, 7u);
  EXPECT_EQ(parsed.options.jobs, 3u);
  EXPECT_TRUE(parsed.options.explain);
  EXPECT_EQ(parsed.options.paths, (std::vector<std::string>{"-", "x"}));
}

TEST(CliCommandLine, RefusesBadInputNamingTheOption) {
  for (const std::vector<const char*>& args : {std::vector<const char*>{"--max-bytes", "lots", "a"},
                                               {"--only", "", "a"},
                                               {"--explain", "--summary", "a"},
                                               {"--bogus", "a"},
                                               {"--max-tokens"}}) {
    const ParsedCommandLine parsed = parse(args);
    EXPECT_EQ(parsed.action, CommandAction::kUsageError) << args[0];
    EXPECT_NE(parsed.error.find(args[0]), std::string::npos) << parsed.error;
  }
  EXPECT_EQ(parse({}).action, CommandAction::kUsageError);  // no path
  EXPECT_EQ(parse({"--help"}).action, CommandAction::kHelp);
  EXPECT_EQ(parse({"--version"}).action, CommandAction::kVersion);
}

TEST(CliExplanation, CopiesTheRecordAndShowsTheBestLanguagesOnce) {
  Lingomat::Trace trace;
  trace.by_filename = {"Make"};
  trace.interpreter = "ruby";
  trace.by_interpreter = {"Ruby"};
  trace.extension = ".h";
  trace.by_extension = {"C", "Cpp"};
  trace.candidates = {"Make", "Ruby", "C", "Cpp"};
  trace.token_count = 10;
  trace.ranking = {{"Cpp", -20.0}, {"Cpp", -20.0}, {"C", -50.0}, {"Ruby", -90.0}};
  trace.kept = {{"Cpp", -20.0}, {"Cpp", -20.0}, {"C", -50.0}};
  trace.answer = "Cpp";
  trace.reason = Lingomat::Trace::Reason::kClassifier;
  trace.floors = {40, -8.0};

  const Evidence evidence = explain_identification(trace, "Makefile.h");
  EXPECT_EQ(evidence.name, "Makefile.h");
  EXPECT_EQ(evidence.by_filename, trace.by_filename);
  EXPECT_EQ(evidence.interpreter, "ruby");
  EXPECT_EQ(evidence.by_interpreter, trace.by_interpreter);
  EXPECT_EQ(evidence.extension, ".h");
  EXPECT_EQ(evidence.by_extension, trace.by_extension);
  EXPECT_EQ(evidence.candidates, trace.candidates);
  EXPECT_EQ(evidence.token_count, 10u);
  EXPECT_EQ(evidence.min_tokens, 40u);
  EXPECT_EQ(evidence.min_score_per_token, -8.0);
  ASSERT_EQ(evidence.ranking.size(), 3u);  // the duplicate is shown once
  EXPECT_EQ(evidence.ranking[0].language, "Cpp");
  EXPECT_DOUBLE_EQ(evidence.ranking[0].score_per_token, -2.0);
  EXPECT_TRUE(evidence.ranking[1].above_floor);
  EXPECT_EQ(evidence.ranking[2].language, "Ruby");
  EXPECT_FALSE(evidence.ranking[2].above_floor);
  EXPECT_EQ(evidence.decision, "classifier");
}

TEST(CliExplanation, NamesTheDecisionFromTheEnginesReason) {
  using Reason = Lingomat::Trace::Reason;
  Lingomat::Trace trace;
  trace.answer = "Python";
  trace.reason = Reason::kFirstCandidate;
  EXPECT_EQ(explain_identification(trace, "").decision, "first candidate");
  // A single candidate that the classifier could not confirm, then one that it did.
  trace.reason = Reason::kOnlyCandidate;
  EXPECT_EQ(explain_identification(trace, "").decision, "first candidate");
  trace.kept = {{"Python", -3.0}};
  EXPECT_EQ(explain_identification(trace, "").decision, "classifier");
  trace.answer.clear();
  trace.kept.clear();
  trace.reason = Reason::kNone;
  EXPECT_EQ(explain_identification(trace, "").decision, "none");
}

TEST(CliProse, FunctionWordsMarkProseNotCode) {
  EXPECT_TRUE(
      reads_as_prose("This program is free software; you can redistribute it and/or "
                     "modify it under the terms of the licence."));
  EXPECT_FALSE(reads_as_prose("for (int i = 0; i < count; ++i) total += values[i];\n"));
  EXPECT_FALSE(reads_as_prose(""));
  EXPECT_FALSE(reads_as_prose("1,2,3\n4,5,6\n"));
  // Three function words in ten is prose, two is not; case does not matter.
  EXPECT_TRUE(reads_as_prose("THE Of AND alpha beta gamma delta epsilon zeta eta"));
  EXPECT_FALSE(reads_as_prose("the of alpha beta gamma delta epsilon zeta eta theta"));
  // Only the window the engine reads counts.
  const std::string code_then_prose =
      std::string(kProseWindow, ';') + " the of and the of and the of and";
  EXPECT_FALSE(reads_as_prose(code_then_prose));
}

// The catalog the tool lists comes from the engine; it must be the data file's, entry for
// entry and in file order, as a direct reading of the file gives it.
TEST(CliCatalog, FromTheEngineEqualsTheDataFile) {
  Lingomat::Opts opts;
  opts.classifier.data_file = LINGOMAT_SOURCE_TREE_DATA;
  const Lingomat engine(opts);
  const std::vector<LanguageEntry> from_engine = language_catalog(engine);
  const std::vector<LanguageEntry> from_file = read_language_catalog(LINGOMAT_SOURCE_TREE_DATA);
  ASSERT_EQ(from_engine.size(), from_file.size());
  EXPECT_EQ(catalog_json_lines(from_engine), catalog_json_lines(from_file));
}

}  // namespace
}  // namespace quillon::lingomat::cli
