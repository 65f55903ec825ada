// The tools' shared code: how a tool ends, definitions, samples trees and the split.
#include <algorithm>
#include <filesystem>
#include <new>
#include <set>

#include <gtest/gtest.h>

#include "common/definitions.h"
#include "common/samples_tree.h"
#include "common/split.h"
#include "common/tool_error.h"
#include "common/tool_main.h"
#include "test_support.h"
#include "train/sample_selection.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::write_text;
using Strings = std::vector<std::string>;

template <typename Action>
std::string error_of(Action action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "(no error)";
}

TEST(RunToolTest, EachFailureHasItsStatusAndOneMessage) {
  const std::vector<std::tuple<std::function<int()>, int, std::string>> cases = {
      {[] { return 3; }, 3, ""},
      {[]() -> int { throw UsageError("--x: bad"); }, 2,
       "tool: --x: bad\nTry 'tool --help' for more information.\n"},
      {[]() -> int { throw ToolError("no data", 4); }, 4, "tool: no data\n"},
      {[]() -> int { throw std::bad_alloc(); }, 1, "tool: out of memory\n"},
      {[]() -> int { throw std::logic_error("oops"); }, 1, "tool: internal error: oops\n"},
  };
  for (const auto& [body, status, message] : cases) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(run_tool("tool", body), status) << message;
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), message);
  }
}

TEST(DefinitionsTest, ParsesSectionsAndReportsMalformedLinesWithTheirNumber) {
  const auto definitions = parse_definitions(
      "# comment\r\n\n[Python]\nextensions = .py .pyi\n  # indented\nfilenames = SConstruct\n"
      "extensions = .pyw .py\r\n[Graphviz (DOT)]\nextensions =\t.dot\t.gv\n[ Empty ]\n",
      "defs");
  const auto& languages = definitions.languages();
  ASSERT_EQ(languages.size(), 3u);
  EXPECT_EQ(languages[0].line, 3);
  // Repeated keys accumulate; a value given twice is kept once, where it first appeared.
  EXPECT_EQ(languages[0].extensions, (Strings{".py", ".pyi", ".pyw"}));
  EXPECT_EQ(languages[0].filenames, Strings{"SConstruct"});
  EXPECT_EQ(languages[1].extensions, (Strings{".dot", ".gv"}));
  EXPECT_EQ(languages[2].name, "Empty");
  EXPECT_NE(definitions.find("Graphviz (DOT)"), nullptr);
  EXPECT_EQ(definitions.find("python"), nullptr);  // names are case-sensitive

  const std::vector<std::pair<std::string, std::string>> cases = {
      {"extensions = .c\n", "defs:1: 'extensions' comes before any '[Language]' section"},
      {"[C]\n\n.c .h\n", "defs:3: expected '[Language]', 'key = values'"},
      {"[C\n", "defs:1: section header '[C' lacks its closing ']'"},
      {"[C]\n[  ]\n", "defs:2: empty language name"},
      {"[C]\n[Java]\n[C]\n", "defs:3: language 'C' is already defined on line 1"},
      {"[C]\nextensions = c\n", "defs:2: extension 'c' must be one dot"},
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

TEST(SamplesTreeTest, RejectsMalformedTreesNamingThePlace) {
  const test_support::TempDir dir;
  write_text(dir / "a/README", "x");
  write_text(dir / "b/Go/main.go", "package main");
  std::filesystem::create_directories(dir / "c/Go/empty-project");
  for (const auto& [root, message] : std::vector<std::pair<std::string, std::string>>{
           {dir / "a/README", "samples folder " + (dir / "a/README") + " is not a folder"},
           {dir / "a", "holds the file README"},
           {dir / "b", "sample " + (dir / "b/Go/main.go") + " is not inside a project folder"},
           {dir / "c", "language folder " + (dir / "c/Go") + " holds no sample file"}}) {
    const std::string error = error_of([&] { walk_samples(root); });
    EXPECT_NE(error.find(message), std::string::npos) << error << " lacks " << message;
  }
}

TEST(SplitTest, HoldsOutEveryNthProjectInHashOrderAndCapsStably) {
  // The published vectors of 64-bit FNV-1a: the Python tools hold out the same projects.
  EXPECT_EQ(fnv1a_64(""), 0xcbf29ce484222325ULL);
  EXPECT_EQ(fnv1a_64("foobar"), 0x85944171f73967e8ULL);
  // Hash order of these names: echo, delta, alpha, charlie, bravo.
  const Strings projects = {"alpha", "bravo", "charlie", "delta", "echo"};
  EXPECT_EQ(test_projects(projects, 3, 0), (Strings{"charlie", "echo"}));
  EXPECT_EQ(test_projects(projects, 3, 2), Strings{"alpha"});
  EXPECT_TRUE(test_projects({"only"}, 3, 0).empty());

  std::vector<SampleFile> files;
  for (int i = 0; i < 20; ++i) files.push_back({projects[i % 4], std::to_string(i), ""});
  // A capped choice depends neither on the input order nor on files left out going away.
  const auto capped = [](const std::vector<SampleFile>& files) {
    std::set<std::string> names;
    for (const auto& file : cap_samples(files, 5)) names.insert(file.relative_path);
    return names;
  };
  const auto chosen = capped(files);
  ASSERT_EQ(chosen.size(), 5u);
  EXPECT_EQ(capped({files.rbegin(), files.rend()}), chosen);
  auto fewer = files;
  fewer.erase(std::find_if(fewer.begin(), fewer.end(),
                           [&](const auto& file) { return !chosen.count(file.relative_path); }));
  EXPECT_EQ(capped(fewer), chosen);
}

}  // namespace
}  // namespace quillon::lingomat::tools
