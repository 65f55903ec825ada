#include "common/options.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace quillon::lingomat::tools
