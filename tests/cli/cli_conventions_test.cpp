// Conventions of a tree-walking tool: ignore files, excludes, language names and --only.
#include "cli_harness.h"

namespace lingomat_cli_test {
namespace {

using ConventionsTest = CliTest;

std::vector<std::string> printed_paths(const std::string& out) {
  std::vector<std::string> paths;
  for (const std::string& line : lines_of(out)) paths.push_back(line.substr(0, line.find('\t')));
  return paths;
}

TEST_F(ConventionsTest, IgnoreFilesAreHonouredUnlessTurnedOff) {
  write_file("repo/.gitignore", "# build outputs\nbuild/\n*.be\n!keep.be\n/top.al\n");
  write_file("repo/sub/.ignore", "local.al\n");
  write_file("repo/build/out.al", "x\n");
  write_file("repo/a.be", "x\n");
  write_file("repo/keep.be", "x\n");
  write_file("repo/top.al", "x\n");
  write_file("repo/sub/top.al", "x\n");  // "/top.al" is anchored at the root only
  write_file("repo/sub/local.al", "x\n");
  write_file("repo/other/local.al", "x\n");    // the sub folder's rule stays in sub
  write_file("repo/dir.be/inside.al", "x\n");  // a folder matching "*.be" is left out whole
  const CliRun walked = run_with_data({path("repo")});
  EXPECT_EQ(walked.exit_code, 0) << walked.err;
  EXPECT_EQ(printed_paths(walked.out),
            (std::vector<std::string>{path("repo/.gitignore"), path("repo/keep.be"),
                                      path("repo/other/local.al"), path("repo/sub/.ignore"),
                                      path("repo/sub/top.al")}));
  const CliRun everything = run_with_data({"--no-ignore", path("repo")});
  EXPECT_EQ(printed_paths(everything.out).size(), 10u) << everything.out;
}

TEST_F(ConventionsTest, ExcludeGlobsMatchNamesOrPathsBelowTheWalkedFolder) {
  write_file("tree/a.al", "x\n");
  write_file("tree/data/big.json", "x\n");
  write_file("tree/vendor/lib/b.al", "x\n");
  write_file("tree/vendor.al", "x\n");
  const CliRun result =
      run_with_data({"--exclude", "*.json", "--exclude=vendor/lib", path("tree")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(printed_paths(result.out),
            (std::vector<std::string>{path("tree/a.al"), path("tree/vendor.al")}));
  EXPECT_EQ(run_with_data({"--exclude", "", path("tree")}).exit_code, 2);
}

TEST_F(ConventionsTest, ListLanguagesAsTextAndJson) {
  const CliRun text = run_with_data({"--list-languages"});
  EXPECT_EQ(text.exit_code, 0) << text.err;
  EXPECT_EQ(text.out, "Alpha\t.al\nBeta\t.be .al\n");
  const CliRun json = run_with_data({"--list-languages", "--json"});
  const std::vector<std::string> lines = lines_of(json.out);
  ASSERT_EQ(lines.size(), 2u) << json.out;
  EXPECT_EQ(lines[0], R"({"name":"Alpha","extensions":[".al"],"filenames":["Alphafile"],)"
                      R"("interpreters":[],"by_content":true})");
  EXPECT_EQ(run_with_data({"--list-languages", path("x")}).exit_code, 2);
}

TEST_F(ConventionsTest, OnlyRefusesUnknownNamesAndSuggestsTheClosest) {
  const std::string file = write_file("a.be", "x\n");
  const CliRun lower = run_with_data({"--only", "beta", file});
  EXPECT_EQ(lower.exit_code, 2);
  EXPECT_EQ(lower.out, "");
  EXPECT_NE(lower.err.find("unknown language 'beta' for --only; did you mean 'Beta'?"),
            std::string::npos)
      << lower.err;
  const CliRun far = run_with_data({"--only", "Fortran", file});
  EXPECT_EQ(far.exit_code, 2);
  EXPECT_EQ(far.err.find("did you mean"), std::string::npos) << far.err;
  // A known name restricts the answers: ".al" means Alpha first, Beta second.
  const std::string both = write_file("b.al", "x\n");
  const CliRun known = run_with_data({"--only", "Beta", both});
  EXPECT_EQ(known.exit_code, 0) << known.err;
  EXPECT_EQ(known.out, both + "\tBeta\n");
}

TEST_F(ConventionsTest, FilesFromAListOrStandardInputWithNulSeparators) {
  const std::string a = write_file("a.al", "x\n");
  const std::string odd = write_file("line\nbreak.be", "x\n");
  write_file("tree/c.be", "x\n");
  const std::string list = write_file("list.txt", a + "\n\n" + path("tree") + "\n");
  const CliRun from_file = run_with_data({"--files-from", list});
  EXPECT_EQ(from_file.exit_code, 0) << from_file.err;
  EXPECT_EQ(from_file.out, a + "\tAlpha\n" + path("tree/c.be") + "\tBeta\n");

  // With -0 a path may hold a line feed, in the list and in the output alike.
  const CliRun nul = run_with_data({"-0", "--files-from", "-"}, odd + '\0' + a + '\0');
  EXPECT_EQ(nul.exit_code, 0) << nul.err;
  EXPECT_EQ(nul.out, a + "\tAlpha" + '\0' + odd + "\tBeta" + '\0');

  // A pipe named by path, as a process substitution ("<(find ...)") hands it over.
  const CliRun piped = run_with_data({"--files-from", "/dev/stdin"}, a + "\n");
  EXPECT_EQ(piped.exit_code, 0) << piped.err;
  EXPECT_EQ(piped.out, a + "\tAlpha\n");
}

TEST_F(ConventionsTest, FilesFromProblemsAreUsageErrors) {
  EXPECT_EQ(run_with_data({"--files-from", path("missing.txt")}).exit_code, 2);
  const CliRun folder = run_with_data({"--files-from", root_});
  EXPECT_EQ(folder.exit_code, 2);
  EXPECT_NE(folder.err.find("cannot read --files-from " + root_ + ": Is a directory"),
            std::string::npos)
      << folder.err;
  EXPECT_EQ(run_with_data({"--files-from", "-", "-"}).exit_code, 2);
  EXPECT_EQ(run_with_data({"-0", "--explain", path("a.al")}).exit_code, 2);
  const CliRun empty = run_with_data({"--files-from", write_file("empty.txt", "")});
  EXPECT_EQ(empty.exit_code, 0) << empty.err;
  EXPECT_EQ(empty.out, "");
}

// `text` (ASCII) as UTF-16 in the given byte order, with or without a byte-order mark.
std::string utf16(const std::string& text, bool little_endian, bool with_bom) {
  std::string out = with_bom ? (little_endian ? "\xFF\xFE" : "\xFE\xFF") : "";
  for (const char c : text) {
    out += little_endian ? std::string{c, '\0'} : std::string{'\0', c};
  }
  return out;
}

TEST_F(ConventionsTest, Utf16WithAByteOrderMarkIsDecodedNotSkipped) {
  write_file("tree/le", utf16(words("beta", 10), true, true));
  write_file("tree/be", utf16(words("beta", 10), false, true));
  write_file("tree/nobom", utf16(words("beta", 10), true, false));  // binary as far as we know
  // A surrogate pair, a lone surrogate and an odd last byte decode without harm.
  write_file("tree/odd",
             utf16(words("alpha", 10), true, true) + "\x3D\xD8\x00\xDE" + "\x00\xDC" + "x");
  const CliRun result = run_with_tool_defaults({path("tree")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.out, path("tree/be") + "\tBeta\n" + path("tree/le") + "\tBeta\n" +
                            path("tree/odd") + "\tAlpha\n");
}

std::string base64_decoded(const std::string& text) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    if (c == '=') break;
    bits = (bits << 6) | static_cast<unsigned>(digits.find(c));
    count += 6;
    if (count >= 8) {
      count -= 8;
      out += static_cast<char>((bits >> count) & 0xFF);
    }
  }
  return out;
}

TEST_F(ConventionsTest, JsonKeepsPathsThatAreNotUtf8AsTheirBytes) {
  // Three lengths, so that every padding of the encoding comes up.
  for (const std::string name : {"caf\xE9.al", "caf\xE9x.al", "caf\xE9xy.al"}) {
    const std::string file = write_file(name, "x\n");
    const CliRun result = run_with_data({"--json", file});
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_NE(result.out.find("caf\xEF\xBF\xBD"), std::string::npos) << result.out;
    const std::string key = "\"path_base64\":\"";
    const auto start = result.out.find(key);
    ASSERT_NE(start, std::string::npos) << result.out;
    const auto end = result.out.find('"', start + key.size());
    EXPECT_EQ(base64_decoded(result.out.substr(start + key.size(), end - start - key.size())),
              file);
  }
  const CliRun plain = run_with_data({"--json", write_file("plain.al", "x\n")});
  EXPECT_EQ(plain.out.find("path_base64"), std::string::npos) << plain.out;
}

}  // namespace
}  // namespace lingomat_cli_test
