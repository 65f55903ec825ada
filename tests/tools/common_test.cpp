// The tools' shared code: command lines, how a tool ends, definitions, samples trees, UTF-8.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <new>
#include <set>
#include <stdexcept>

#include <gtest/gtest.h>

#include "common/definitions.h"
#include "common/options.h"
#include "common/progress_line.h"
#include "common/samples_tree.h"
#include "common/split.h"
#include "common/tool_error.h"
#include "common/tool_main.h"
#include "common/utf8.h"
#include "test_support.h"
#include "train/sample_selection.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::TempDir;
using test_support::write_text;

template <typename Action>
std::string error_of(Action action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "(no error)";
}

// A parser shaped like the tools' own, with its targets.
struct Parser {
  std::string input, output;
  std::uint64_t count = 7;
  double score = -8.0;
  bool flag = false;
  std::vector<std::string> only, rest;
  OptionParser parser{"tool", "does things"};

  explicit Parser(bool with_rest = false) {
    parser.add_positional("INPUT", "the input", &input);
    if (with_rest) parser.add_positionals("PATH...", "the paths", &rest);
    parser.add_string("output", "FILE", "the output", &output);
    parser.add_alias('o', "output");
    parser.add_uint("count", "N", "a count", &count, 1, 100);
    parser.add_alias('j', "count");
    parser.add_double("score", "X", "a score", &score);
    parser.add_flag("flag", "a flag", &flag);
    parser.add_alias('0', "flag");
    parser.add_strings("only", "LANG", "repeatable", &only);
  }
  bool parse(std::vector<const char*> args) {
    args.insert(args.begin(), "tool");
    return parser.parse(static_cast<int>(args.size()), args.data());
  }
};

TEST(OptionParserTest, ReadsEveryKindOfOptionInAnyOrder) {
  Parser f(true);
  ASSERT_TRUE(f.parse({"--count", "12", "-o", "out.json", "--only=C", "--only", "C++", "--score",
                       "-0.5", "in", "a", "-", "-0", "--", "-c", ""}));
  EXPECT_EQ(f.input + "|" + f.output, "in|out.json");
  EXPECT_EQ(f.count, 12u);
  EXPECT_TRUE(f.flag);
  EXPECT_EQ(f.only, (std::vector<std::string>{"C", "C++"}));
  EXPECT_EQ(f.rest, (std::vector<std::string>{"a", "-", "-c", ""}));
  EXPECT_DOUBLE_EQ(f.score, -0.5);        // a negative value is a value, not an option
  EXPECT_TRUE(f.parser.given("output"));  // given by its alias
  Parser g;
  ASSERT_TRUE(g.parse({"-j4", "--", "--in"}));
  EXPECT_EQ(g.input, "--in");
  EXPECT_EQ(g.count, 4u);
  EXPECT_DOUBLE_EQ(g.score, -8.0);  // untouched when not given
  EXPECT_FALSE(g.parser.given("score"));
}

// Each bad command line fails with a message that names the problem.
TEST(OptionParserTest, RejectsBadCommandLines) {
  const std::vector<std::pair<std::vector<const char*>, std::string>> cases = {
      {{"in", "--nope"}, "unknown option '--nope'"},
      {{"in", "-fx"}, "unknown option '-fx'"},
      {{"in", "--output"}, "--output needs a value"},
      {{"in", "--count", "abc"}, "--count: expected a whole number, got 'abc'"},
      {{"in", "--count", "-3"}, "--count: expected a whole number"},
      {{"in", "-j0"}, "--count: expected at least 1"},
      {{"in", "-jx"}, "--count: expected a whole number"},
      {{"in", "--count", "101"}, "--count: expected at most 100"},
      {{"in", "--count", "99999999999999999999999"}, "--count: expected at most 100"},
      {{"in", "--score", "1.5x"}, "--score: expected a number"},
      {{"in", "--score", "nan"}, "--score: expected a number"},
      {{"in", "--score", " -1"}, "--score: expected a number"},
      {{"in", "--flag=yes"}, "--flag takes no value"},
      {{"in", "-0x"}, "unknown option '-0x'"},
      {{"in", "--output", ""}, "--output: FILE cannot be empty"},
      {{"in", "--only="}, "--only: LANG cannot be empty"},
      {{}, "missing argument INPUT"},
      {{"in", "extra"}, "unexpected argument 'extra'"},
  };
  for (const auto& [args, message] : cases) {
    const std::string error = error_of([&] { Parser().parse(args); });
    EXPECT_NE(error.find(message), std::string::npos) << error << " lacks " << message;
  }
}

struct Ending {
  int status;
  std::string err;
};

Ending end_with(const std::function<int()>& body) {
  ::testing::internal::CaptureStderr();
  const int status = run_tool("tool", body);
  return {status, ::testing::internal::GetCapturedStderr()};
}

TEST(RunToolTest, EachFailureHasItsStatusAndOneMessage) {
  EXPECT_EQ(end_with([] { return 3; }).status, 3);  // the body's own status passes through
  const std::vector<std::tuple<std::function<int()>, int, std::string>> cases = {
      {[]() -> int { throw UsageError("--x: bad"); }, 2,
       "tool: --x: bad\nTry 'tool --help' for more information.\n"},
      {[]() -> int { throw ToolError("cannot read f"); }, 1, "tool: cannot read f\n"},
      {[]() -> int { throw ToolError("no data", 2); }, 2, "tool: no data\n"},
      {[]() -> int { throw std::bad_alloc(); }, 1, "tool: out of memory\n"},
      {[]() -> int { throw std::logic_error("oops"); }, 1, "tool: internal error: oops\n"},
  };
  for (const auto& [body, status, message] : cases) {
    const Ending ending = end_with(body);
    EXPECT_EQ(ending.status, status) << message;
    EXPECT_EQ(ending.err, message);
  }
  // Off a terminal the progress line draws nothing, whatever the run's size.
  std::FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  ProgressLine(file, "label", 10 * kProgressMinFiles).update(5);
  EXPECT_EQ(std::ftell(file), 0L);
  std::fclose(file);
}

TEST(DefinitionsTest, ParsesSectionsKeysAndComments) {
  const auto definitions = parse_definitions(
      "# leading comment\r\n\n[Python]\nextensions = .py .pyi\n  # indented comment\n"
      "filenames = SConstruct\nextensions = .pyw .py\r\ninterpreters = python\n\n"
      "[Graphviz (DOT)]\nextensions =\t.dot\t.gv\n[ Empty ]\n",
      "defs");
  const auto& languages = definitions.languages();
  ASSERT_EQ(languages.size(), 3u);
  EXPECT_EQ(languages[0].name, "Python");
  EXPECT_EQ(languages[0].line, 3);
  // Repeated keys accumulate; a value given twice is kept once, where it first appeared.
  EXPECT_EQ(languages[0].extensions, (std::vector<std::string>{".py", ".pyi", ".pyw"}));
  EXPECT_EQ(languages[0].filenames, std::vector<std::string>{"SConstruct"});
  EXPECT_EQ(languages[0].interpreters, std::vector<std::string>{"python"});
  EXPECT_EQ(languages[1].extensions, (std::vector<std::string>{".dot", ".gv"}));
  EXPECT_EQ(languages[2].name, "Empty");
  EXPECT_NE(definitions.find("Graphviz (DOT)"), nullptr);
  EXPECT_EQ(definitions.find("python"), nullptr);  // names are case-sensitive

  const TempDir dir;
  EXPECT_EQ(error_of([&] { read_definitions_file(dir / "none.def"); }),
            "cannot read definitions file " + (dir / "none.def") + ": No such file or directory");
}

// Every malformed line is reported with the source name and its line number.
TEST(DefinitionsTest, ReportsMalformedLinesWithTheirNumber) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"extensions = .c\n", "defs:1: 'extensions' comes before any '[Language]' section"},
      {"[C]\nsuffixes = .c\n", "defs:2: unknown key 'suffixes'"},
      {"[C]\n\n.c .h\n", "defs:3: expected '[Language]', 'key = values'"},
      {"[C\n", "defs:1: section header '[C' lacks its closing ']'"},
      {"[C]\n[  ]\n", "defs:2: empty language name"},
      {"[C]\n[Java]\n[C]\n", "defs:3: language 'C' is already defined on line 1"},
      {"[C]\nextensions = c\n", "defs:2: extension 'c' must be one dot"},
      {"[C]\nextensions = .\n", "defs:2: extension '.' must be one dot"},
      {"[C]\nextensions = .tar.gz\n", "defs:2: extension '.tar.gz' must be one dot"},
      {"[A/B]\n", "defs:1: language name 'A/B' contains '/'"},
      {"[C]\nfilenames = caf\xE9\n", "defs:2: not valid UTF-8"},
      {"# only a comment\n", "defs: defines no language"},
  };
  for (const auto& [text, message] : cases) {
    const std::string error = error_of([&] { parse_definitions(text, "defs"); });
    EXPECT_NE(error.find(message), std::string::npos) << error << " lacks " << message;
  }
}

TEST(SamplesTreeTest, ListsFilesInOrderUnderTheirProjectsAndRejectsMalformedTrees) {
  const TempDir dir;
  write_text(dir / "s/Python/proj-b/z.py", "z");
  write_text(dir / "s/Python/proj-a/pkg/b.py", "b");
  write_text(dir / "s/Python/proj-a/a.py", "a");
  write_text(dir / "s/C++/lib/.clang-format", "dotfiles are samples too");
  std::filesystem::create_directories(dir / "s/C++/empty-project");
  const auto tree = walk_samples(dir / "s");
  ASSERT_EQ(tree.size(), 2u);
  EXPECT_EQ(tree[0].language + ":" + tree[0].files.at(0).path,
            "C++:" + (dir / "s/C++/lib/.clang-format"));
  EXPECT_EQ(tree[0].projects(), std::vector<std::string>{"lib"});  // empty project ignored
  std::string files;
  for (const SampleFile& file : tree[1].files)
    files += file.project + ":" + file.relative_path + " ";
  EXPECT_EQ(files, "proj-a:proj-a/a.py proj-a:proj-a/pkg/b.py proj-b:proj-b/z.py ");

  write_text(dir / "file", "x");
  write_text(dir / "a/README", "x");
  write_text(dir / "b/Go/main.go", "package main");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {dir / "none", "samples folder " + (dir / "none") + " does not exist"},
      {dir / "file", "samples folder " + (dir / "file") + " is not a folder"},
      {dir / "a", "holds the file README"},
      {dir / "b", "sample " + (dir / "b/Go/main.go") + " is not inside a project folder"},
  };
  for (const auto& [root, message] : cases) {
    const std::string error = error_of([&] { walk_samples(root); });
    EXPECT_NE(error.find(message), std::string::npos) << error << " lacks " << message;
  }
}

TEST(SplitTest, HoldsOutEveryNthProjectInHashOrderAndNeverTrainsOnIt) {
  // The published vectors of 64-bit FNV-1a: the Python tools hold out the same projects.
  EXPECT_EQ(fnv1a_64(""), 0xcbf29ce484222325ULL);
  EXPECT_EQ(fnv1a_64("foobar"), 0x85944171f73967e8ULL);
  // Hash order of these names: echo, delta, alpha, charlie, bravo.
  const std::vector<std::string> projects = {"alpha", "bravo", "charlie", "delta", "echo"};
  EXPECT_EQ(test_projects(projects, 3, 0), (std::vector<std::string>{"charlie", "echo"}));
  EXPECT_EQ(test_projects(projects, 3, 2), std::vector<std::string>{"alpha"});
  EXPECT_TRUE(test_projects({"only"}, 3, 0).empty());

  LanguageSamples language{"Go", "Go", {}};
  for (int i = 0; i < 20; ++i) {
    language.files.push_back({"p" + std::to_string(i % 4), std::to_string(i), ""});
  }
  for (std::uint64_t fold = 0; fold < 4; ++fold) {
    const auto train = select_split(language, {SplitSide::kTrain, 4, fold});
    const auto test = select_split(language, {SplitSide::kTest, 4, fold});
    EXPECT_EQ(train.size() + test.size(), 20u);
    EXPECT_FALSE(train.empty());
    for (const SampleFile& held_out : test) {
      for (const SampleFile& trained : train) EXPECT_NE(held_out.project, trained.project);
    }
  }
  EXPECT_EQ(select_split(language, {SplitSide::kAll, 3, 0}).size(), 20u);

  // A capped choice does not depend on the input order, nor on files left out going away.
  const auto names = [](const std::vector<SampleFile>& chosen) {
    std::set<std::string> set;
    for (const SampleFile& file : chosen) set.insert(file.relative_path);
    return set;
  };
  const auto chosen = names(cap_samples(language.files, 5));
  ASSERT_EQ(chosen.size(), 5u);
  EXPECT_EQ(names(cap_samples({language.files.rbegin(), language.files.rend()}, 5)), chosen);
  auto fewer = language.files;
  fewer.erase(std::find_if(fewer.begin(), fewer.end(),
                           [&](const SampleFile& f) { return !chosen.count(f.relative_path); }));
  EXPECT_EQ(names(cap_samples(fewer, 5)), chosen);
}

TEST(Utf8Test, TellsWellFormedTextAndReplacesOnlyBadBytes) {
  for (const std::string valid : {"", "caf\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                                  "\xED\x9F\xBF\xEE\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(is_valid_utf8(valid)) << valid;
  }
  EXPECT_TRUE(is_valid_utf8(std::string("nul\0inside", 10)));
  for (const char* invalid :
       {"caf\xE9", "\x80", "\xC3", "\xE2\x82", "\xC0\x80", "\xE0\x80\x80", "\xF0\x80\x80\x80",
        "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xC3\x28"}) {
    EXPECT_FALSE(is_valid_utf8(invalid)) << invalid;
  }
  EXPECT_EQ(sanitize_utf8("caf\xC3\xA9 caf\xE9!"), "caf\xC3\xA9 caf\xEF\xBF\xBD!");
  EXPECT_EQ(sanitize_utf8("\xE2\x82"), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

}  // namespace
}  // namespace quillon::lingomat::tools
