#include "common/definitions.h"

#include <gtest/gtest.h>

#include "common/tool_error.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::TempDir;
using test_support::write_text;

TEST(DefinitionsTest, ParsesSectionsKeysAndComments) {
  const auto definitions = parse_definitions(R"(# leading comment

[Python]
extensions = .py .pyi
  # indented comment
filenames = SConstruct
extensions = .pyw .py
interpreters = python

[Graphviz (DOT)]
extensions =	.dot	.gv
[ Empty ]
)",
                                             "defs");
  const auto& languages = definitions.languages();
  ASSERT_EQ(languages.size(), 3u);
  EXPECT_EQ(languages[0].name, "Python");
  EXPECT_EQ(languages[0].line, 3);
  // Repeated keys accumulate; a value given twice is kept once, where it first appeared.
  EXPECT_EQ(languages[0].extensions, (std::vector<std::string>{".py", ".pyi", ".pyw"}));
  EXPECT_EQ(languages[0].filenames, (std::vector<std::string>{"SConstruct"}));
  EXPECT_EQ(languages[0].interpreters, (std::vector<std::string>{"python"}));
  EXPECT_EQ(languages[1].name, "Graphviz (DOT)");
  EXPECT_EQ(languages[1].extensions, (std::vector<std::string>{".dot", ".gv"}));
  EXPECT_EQ(languages[2].name, "Empty");
  EXPECT_TRUE(languages[2].extensions.empty());
  EXPECT_NE(definitions.find("Graphviz (DOT)"), nullptr);
  EXPECT_EQ(definitions.find("python"), nullptr);  // names are case-sensitive
}

TEST(DefinitionsTest, AcceptsWindowsLineEnds) {
  const auto definitions = parse_definitions("[C]\r\nextensions = .c .h\r\n", "defs");
  EXPECT_EQ(definitions.languages().at(0).extensions, (std::vector<std::string>{".c", ".h"}));
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
    try {
      parse_definitions(text, "defs");
      ADD_FAILURE() << "accepted: " << text;
    } catch (const ToolError& error) {
      EXPECT_NE(std::string(error.what()).find(message), std::string::npos)
          << error.what() << " lacks " << message;
    }
  }
}

TEST(DefinitionsTest, ReadsFilesAndNamesUnreadableOnes) {
  TempDir dir;
  write_text(dir / "languages.def", "[Go]\nextensions = .go\n");
  EXPECT_EQ(read_definitions_file(dir / "languages.def").languages().at(0).name, "Go");

  try {
    read_definitions_file(dir / "missing.def");
    ADD_FAILURE();
  } catch (const ToolError& error) {
    EXPECT_EQ(std::string(error.what()), "cannot read definitions file " + (dir / "missing.def") +
                                             ": No such file or directory");
  }
  write_text(dir / "bad.def", "[Go]\nextensions = go\n");
  try {
    read_definitions_file(dir / "bad.def");
    ADD_FAILURE();
  } catch (const ToolError& error) {
    EXPECT_EQ(std::string(error.what()).rfind(dir / "bad.def:2:", 0), 0u) << error.what();
  }
}

}  // namespace
}  // namespace quillon::lingomat::tools
