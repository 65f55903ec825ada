// Files and trees: walking, skipping, reading errors, data files and ordering.
#include <algorithm>
#include <filesystem>

#include <unistd.h>

#include "cli_harness.h"

namespace lingomat_cli_test {
namespace {

namespace fs = std::filesystem;

using FilesTest = CliTest;

std::vector<std::string> printed_paths(const std::string& out) {
  std::vector<std::string> paths;
  for (const std::string& line : lines_of(out)) paths.push_back(line.substr(0, line.find('\t')));
  return paths;
}

TEST_F(FilesTest, WalksTreesButSkipsVersionControlFolders) {
  write_file("tree/a.al", "hi\n");
  write_file("tree/deep/er/b.be", "hi\n");
  write_file("tree/.hidden.be", "hi\n");
  for (const char* folder : {".git", ".hg", ".svn", ".bzr", "CVS", "_darcs"}) {
    write_file(std::string("tree/") + folder + "/c.al", "hi\n");
    write_file(std::string("tree/deep/") + folder + "/d.al", "hi\n");
  }
  const CliRun result = run_with_data({path("tree")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(printed_paths(result.out),
            (std::vector<std::string>{path("tree/.hidden.be"), path("tree/a.al"),
                                      path("tree/deep/er/b.be")}));
}

TEST_F(FilesTest, SkipsBinaryFilesFoundInTrees) {
  write_file("tree/text.al", "hi\n");
  write_file("tree/image.al", std::string("PNG\0\x01\x02", 6));
  // A NUL beyond the sniffed head does not make a file binary.
  write_file("tree/late.al", std::string(9000, 'a') + std::string(1, '\0'));
  const CliRun result = run_with_data({path("tree")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(printed_paths(result.out),
            (std::vector<std::string>{path("tree/late.al"), path("tree/text.al")}));
  // A file named explicitly is identified whatever it holds.
  const CliRun named = run_with_data({path("tree/image.al")});
  EXPECT_EQ(named.out, path("tree/image.al") + "\tAlpha\n");
}

TEST_F(FilesTest, UnreadablePathsAreReportedAndTheRestContinue) {
  const std::string good = write_file("good.al", "hi\n");
  const std::string missing = path("missing.al");
  const std::string dangling = path("dangling.al");
  fs::create_symlink(path("nowhere"), dangling);
  const CliRun result = run_with_data({missing, good, dangling});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, good + "\tAlpha\n");
  EXPECT_NE(result.err.find("lingomat: " + missing + ": No such file or directory\n"),
            std::string::npos)
      << result.err;
  EXPECT_NE(result.err.find("lingomat: " + dangling + ": No such file or directory\n"),
            std::string::npos)
      << result.err;
}

TEST_F(FilesTest, DanglingLinksInsideTreesAreNotFiles) {
  write_file("tree/a.al", "hi\n");
  fs::create_symlink(path("nowhere"), path("tree/broken.al"));
  fs::create_symlink(path("tree/a.al"), path("tree/link.al"));
  const CliRun result = run_with_data({path("tree")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(printed_paths(result.out),
            (std::vector<std::string>{path("tree/a.al"), path("tree/link.al")}));
}

TEST_F(FilesTest, PermissionDeniedIsReportedWhenNotRoot) {
  if (geteuid() == 0) GTEST_SKIP() << "root reads files regardless of their mode";
  const std::string locked = write_file("locked.al", "hi\n");
  fs::permissions(locked, fs::perms::none);
  const CliRun result = run_with_data({locked});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.err.find(locked + ": Permission denied"), std::string::npos) << result.err;
}

TEST_F(FilesTest, DataFileProblemsNameTheStatusAndThePath) {
  const std::string file = write_file("x.al", "hi\n");
  const std::string missing = path("io/none.json");
  const std::string malformed = write_file("io/bad.json", "{\"filenames\": ");
  const std::string incomplete = write_file("io/partial.json", "{\"filenames\": {}}");
  struct Case {
    std::string data;
    std::string status;
  };
  for (const Case& bad : std::vector<Case>{{missing, "File I/O"},
                                           {path("io"), "File I/O"},
                                           {malformed, "Unable to process JSON"},
                                           {incomplete, "Unable to process JSON"}}) {
    const CliRun result = run({"--data", bad.data, file});
    EXPECT_EQ(result.exit_code, 2) << bad.data;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.rfind("lingomat: " + bad.status + ": ", 0), 0u) << result.err;
    EXPECT_NE(result.err.find("'" + bad.data + "'"), std::string::npos) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
  }
}

TEST_F(FilesTest, OrderIsByPathWhateverTheThreadCount) {
  // Names chosen so byte order differs from a natural or case-blind order.
  for (const char* name : {"B.al", "a.al", "a.b/c.al", "a/b.al", "Z/z.be", "_.al", "a-b.al"}) {
    write_file(std::string("tree/") + name, "hi\n");
  }
  for (int i = 0; i < 60; ++i) {
    write_file("tree/many/f" + std::to_string(i) + ".be", words("beta", i));
  }
  const CliRun one = run_with_data({"-j", "1", path("tree")});
  const CliRun four = run_with_data({"-j", "4", path("tree")});
  ASSERT_EQ(one.exit_code, 0) << one.err;
  EXPECT_EQ(one.out, four.out);
  const auto paths = printed_paths(one.out);
  EXPECT_EQ(paths.size(), 67u);
  EXPECT_TRUE(std::is_sorted(paths.begin(), paths.end()));
  EXPECT_TRUE(std::adjacent_find(paths.begin(), paths.end()) == paths.end());
}

TEST_F(FilesTest, OverlappingArgumentsListEachFileOnce) {
  const std::string file = write_file("tree/a.al", "hi\n");
  const CliRun result = run_with_data({path("tree"), file, path("tree")});
  EXPECT_EQ(result.out, file + "\tAlpha\n");
}

TEST_F(FilesTest, FindsTheDataFileBesideARelocatedInstall) {
  // The layout `cmake --install` produces, moved somewhere else.
  const std::string binary = path("prefix/" LINGOMAT_CLI_INSTALLED_BINARY);
  fs::create_directories(fs::path(binary).parent_path());
  fs::copy_file(LINGOMAT_CLI_BINARY, binary);
  const std::string beside =
      (fs::path(binary).parent_path() / LINGOMAT_CLI_DATA_FROM_BINDIR).lexically_normal().string();
  fs::create_directories(fs::path(beside).parent_path());
  fs::copy_file(data_file_, beside);

  const std::string file = write_file("Alphafile", "hi\n");
  const CliRun result = run_program(binary, {file});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.out, file + "\tAlpha\n");
}

}  // namespace
}  // namespace lingomat_cli_test
