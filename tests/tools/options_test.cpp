#include "common/options.h"

#include <gtest/gtest.h>

#include "common/help_layout.h"
#include "common/tool_error.h"

namespace quillon::lingomat::tools {
namespace {

// A parser shaped like the tools' own, with its targets.
struct Fixture {
  std::string input;
  std::string output;
  std::uint64_t count = 7;
  double score = -8.0;
  bool flag = false;
  std::vector<std::string> only;
  OptionParser parser{"tool", "does things"};

  Fixture() {
    parser.add_positional("INPUT", "the input", &input);
    parser.add_string("output", "FILE", "the output", &output);
    parser.add_alias('o', "output");
    parser.add_uint("count", "N", "a count", &count, 1, 100);
    parser.add_double("score", "X", "a score", &score);
    parser.add_flag("flag", "a flag", &flag);
    parser.add_strings("only", "LANG", "repeatable", &only);
  }

  bool parse(std::vector<const char*> args) {
    args.insert(args.begin(), "tool");
    return parser.parse(static_cast<int>(args.size()), args.data());
  }
};

TEST(OptionParserTest, ReadsEveryKindOfOptionInAnyOrder) {
  Fixture f;
  ASSERT_TRUE(f.parse({"--count", "12", "in.txt", "-o", "out.json", "--flag", "--only=C", "--only",
                       "C++", "--score", "-0.5"}));
  EXPECT_EQ(f.input, "in.txt");
  EXPECT_EQ(f.output, "out.json");
  EXPECT_EQ(f.count, 12u);
  EXPECT_TRUE(f.flag);
  EXPECT_EQ(f.only, (std::vector<std::string>{"C", "C++"}));
  EXPECT_DOUBLE_EQ(f.score, -0.5);  // a negative value is a value, not an option
  EXPECT_TRUE(f.parser.given("count"));
  EXPECT_FALSE(Fixture().parser.given("count"));
}

TEST(OptionParserTest, DefaultsStayWhenNotGiven) {
  Fixture f;
  ASSERT_TRUE(f.parse({"in"}));
  EXPECT_EQ(f.count, 7u);
  EXPECT_DOUBLE_EQ(f.score, -8.0);
  EXPECT_FALSE(f.flag);
}

TEST(OptionParserTest, DoubleDashEndsOptions) {
  Fixture f;
  ASSERT_TRUE(f.parse({"--", "--looks-like-an-option"}));
  EXPECT_EQ(f.input, "--looks-like-an-option");
}

TEST(OptionParserTest, HelpStopsParsing) {
  Fixture f;
  EXPECT_FALSE(f.parse({"--help"}));
  EXPECT_FALSE(Fixture().parse({"in", "-h"}));
  const std::string help = f.parser.help();
  EXPECT_NE(help.find("-o, --output FILE"), std::string::npos);
  EXPECT_NE(help.find("INPUT"), std::string::npos);
}

// Each bad command line fails with a message that names the problem.
TEST(OptionParserTest, RejectsBadCommandLines) {
  const std::vector<std::pair<std::vector<const char*>, std::string>> cases = {
      {{"in", "--nope"}, "unknown option '--nope'"},
      {{"in", "-x"}, "unknown option '-x'"},
      {{"in", "--output"}, "--output needs a value"},
      {{"in", "--count", "abc"}, "--count: expected a whole number, got 'abc'"},
      {{"in", "--count", "-3"}, "--count: expected a whole number"},
      {{"in", "--count", "0"}, "--count: expected at least 1"},
      {{"in", "--count", "101"}, "--count: expected at most 100"},
      {{"in", "--count", "99999999999999999999999"}, "--count: expected at most 100"},
      {{"in", "--score", "1.5x"}, "--score: expected a number"},
      {{"in", "--score", "nan"}, "--score: expected a number"},
      {{"in", "--score", " -1"}, "--score: expected a number"},
      {{"in", "--flag=yes"}, "--flag takes no value"},
      {{"in", "--output", ""}, "--output: FILE cannot be empty"},
      {{"in", "--only="}, "--only: LANG cannot be empty"},
      {{"in", "-fx"}, "unknown option '-fx'"},
      {{}, "missing argument INPUT"},
      {{"in", "extra"}, "unexpected argument 'extra'"},
  };
  for (const auto& [args, message] : cases) {
    Fixture f;
    try {
      f.parse(args);
      ADD_FAILURE() << "accepted: " << message;
    } catch (const UsageError& error) {
      EXPECT_NE(std::string(error.what()).find(message), std::string::npos)
          << error.what() << " lacks " << message;
    }
  }
}

// The shape the lingomat tool needs: any number of paths, letters with attached values.
struct ListFixture {
  std::vector<std::string> paths;
  std::uint64_t jobs = 0;
  bool null = false;
  OptionParser parser{"tool", "names things"};

  ListFixture() {
    parser.add_positionals("PATH...", "the paths", &paths);
    parser.add_uint("jobs", "N", "threads", &jobs, 1, 64);
    parser.add_alias('j', "jobs");
    parser.add_flag("null", "NUL-separated", &null);
    parser.add_alias('0', "null");
  }

  bool parse(std::vector<const char*> args) {
    args.insert(args.begin(), "tool");
    return parser.parse(static_cast<int>(args.size()), args.data());
  }
};

TEST(OptionParserTest, TrailingListTakesEveryRemainingArgument) {
  ListFixture f;
  ASSERT_TRUE(f.parse({"a", "-", "-j4", "b", "-0", "--", "-c", ""}));
  EXPECT_EQ(f.paths, (std::vector<std::string>{"a", "-", "b", "-c", ""}));
  EXPECT_EQ(f.jobs, 4u);
  EXPECT_TRUE(f.null);
  ListFixture none;
  ASSERT_TRUE(none.parse({"-j", "2"}));  // how many paths are needed is the tool's call
  EXPECT_TRUE(none.paths.empty());
}

TEST(OptionParserTest, AttachedLetterValuesAreCheckedLikeOthers) {
  for (const char* bad : {"-jx", "-j0", "-j65", "-0x"}) {
    ListFixture f;
    EXPECT_THROW(f.parse({bad}), UsageError) << bad;
  }
}

TEST(OptionParserTest, VersionIsToldApartFromHelp) {
  ListFixture help;
  EXPECT_FALSE(help.parse({"-h"}));
  EXPECT_FALSE(help.parser.version_asked());
  EXPECT_EQ(help.parser.exit_text(), help.parser.help());
  ListFixture version;
  EXPECT_FALSE(version.parse({"--version"}));
  EXPECT_TRUE(version.parser.version_asked());
  EXPECT_EQ(version.parser.exit_text(), std::string("tool ") + LINGOMAT_VERSION + "\n");
}

// Lines of a help text, without their line feeds.
std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find('\n', start);
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

TEST(OptionParserTest, HelpGroupsWrapsAndEnds) {
  OptionParser parser("tool", "does things\n\nat length");
  std::vector<std::string> paths;
  bool flag = false;
  std::string value;
  parser.add_positionals("PATH...", "the paths", &paths);
  parser.add_section("Output");
  parser.add_flag("flag",
                  std::string(30, 'x') + " " + std::string(30, 'y') + " " + std::string(14, 'z') +
                      " --flag-like -1",
                  &flag);
  parser.add_section("Input");
  parser.add_string("a-rather-long-option-name", "FILE", "explained below", &value);
  parser.set_epilogue("Exit status: 0.\n");
  const std::string help = parser.help();

  EXPECT_EQ(help.rfind("Usage: tool [options] PATH...\ndoes things\n\nat length\n", 0), 0u) << help;
  EXPECT_LT(help.find("\nOutput:\n      --flag "), help.find("\nInput:\n"));
  EXPECT_NE(help.find("\n      --a-rather-long-option-name FILE\n" + std::string(kHelpColumn, ' ') +
                      "explained below\n"),
            std::string::npos)
      << help;
  EXPECT_NE(help.find("\n" + std::string(kHelpColumn, ' ') + "zzz"), std::string::npos) << help;
  EXPECT_EQ(help.find("Options:"), std::string::npos);
  const std::string ending = "\nExit status: 0.\n";
  EXPECT_EQ(help.substr(help.size() - ending.size()), ending);
  for (const std::string& line : lines_of(help)) {
    EXPECT_LE(line.size(), kHelpWidth) << line;
    EXPECT_EQ(line.find_last_not_of(' ') + 1, line.size()) << "trailing blanks: " << line;
    // Man pages and completion read any indented line starting with '-' as an option.
    if (line.size() > kHelpColumn &&
        line.compare(0, kHelpColumn, std::string(kHelpColumn, ' ')) == 0) {
      EXPECT_NE(line[kHelpColumn], '-') << line;
    }
  }
}

}  // namespace
}  // namespace quillon::lingomat::tools
