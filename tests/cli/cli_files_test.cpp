// Files and trees: walking, skipping, reading errors, data files and ordering.
#include <algorithm>
#include <filesystem>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
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

// Devices and FIFOs may never end or block forever: refused without being read.
TEST_F(FilesTest, NamedPathsThatAreNotRegularFilesAreRefused) {
  const std::string good = write_file("good.al", "hi\n");
  const std::string fifo = path("fifo.al");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const std::string link = path("zero.al");
  fs::create_symlink("/dev/zero", link);
  const CliRun result = run_with_data({"/dev/zero", "/dev/null", good, fifo, link});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, good + "\tAlpha\n");
  for (const std::string& refused :
       {std::string("/dev/zero"), std::string("/dev/null"), fifo, link}) {
    EXPECT_NE(result.err.find("lingomat: " + refused + ": not a regular file\n"), std::string::npos)
        << refused << "\n"
        << result.err;
  }
  // Standard input is a stream, whatever it is connected to.
  EXPECT_EQ(run_with_data({"--name", "Alphafile", "-"}, "").out, "-\tAlpha\n");
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

// Folders and links are made relative to their parent, since the whole path is too long
// for the system calls that take one.
TEST_F(FilesTest, WalksPathsLongerThanPathMaxAndStaysOffLinksToFolders) {
  write_file("outside/secret.al", "hi\n");
  write_file("tree/top.al", "hi\n");
  fs::create_directory_symlink(path("outside"), path("tree/link"));
  const std::string part(200, 'd');
  int folder = open(path("tree").c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_GE(folder, 0);
  std::string deep = path("tree");
  for (int level = 0; level < 25; ++level) {
    ASSERT_EQ(mkdirat(folder, part.c_str(), 0700), 0);
    const int next = openat(folder, part.c_str(), O_RDONLY | O_DIRECTORY);
    close(folder);
    ASSERT_GE(next, 0);
    folder = next;
    deep += "/" + part;
  }
  const int file = openat(folder, "deep.al", O_WRONLY | O_CREAT, 0600);
  ASSERT_GE(file, 0);
  ASSERT_EQ(write(file, "hi\n", 3), 3);
  close(file);
  ASSERT_EQ(symlinkat(path("outside").c_str(), folder, "deeplink"), 0);
  close(folder);
  ASSERT_GT(deep.size(), static_cast<std::size_t>(PATH_MAX));

  const CliRun result = run_with_data({path("tree")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.out, deep + "/deep.al\tAlpha\n" + path("tree/top.al") + "\tAlpha\n");
}

TEST_F(FilesTest, UnreadableFoldersAreReportedWhenNotRoot) {
  if (geteuid() == 0) GTEST_SKIP() << "root lists folders regardless of their mode";
  write_file("tree/a.al", "hi\n");
  write_file("tree/locked/b.al", "hi\n");
  fs::permissions(path("tree/locked"), fs::perms::none);
  const CliRun result = run_with_data({path("tree")});
  fs::permissions(path("tree/locked"), fs::perms::owner_all);
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, path("tree/a.al") + "\tAlpha\n");
  EXPECT_NE(result.err.find(path("tree/locked") + ": Permission denied"), std::string::npos)
      << result.err;
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
  // Spellings of one path are one file, printed as first reached...
  const CliRun walked = run_with_data({path("./tree"), path("tree/"), path("tree")});
  EXPECT_EQ(walked.out, path("./tree/a.al") + "\tAlpha\n");
  // ...unless named explicitly, which is printed as given.
  const CliRun named = run_with_data({path("tree"), path("tree//a.al")});
  EXPECT_EQ(named.out, path("tree//a.al") + "\tAlpha\n");
}

TEST_F(FilesTest, AFileNamedExplicitlyBeatsItsWalkedCopy) {
  write_file("tree/text.al", "hi\n");
  const std::string image = write_file("tree/image.al", std::string("PNG\0\x01\x02", 6));
  // Walking alone skips the binary file; naming it too brings it back, in either order.
  const CliRun after = run_with_data({path("tree"), image});
  EXPECT_EQ(after.exit_code, 0) << after.err;
  EXPECT_EQ(printed_paths(after.out), (std::vector<std::string>{image, path("tree/text.al")}));
  const CliRun before = run_with_data({path("./tree/image.al"), path("tree")});
  EXPECT_EQ(printed_paths(before.out),
            (std::vector<std::string>{path("./tree/image.al"), path("tree/text.al")}));
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

// The source tree is for the binary in its build tree only: a copy elsewhere
// neither reads it nor names it.
TEST_F(FilesTest, OnlyTheBuildTreeBinaryLooksInTheSourceTree) {
  if (fs::exists(LINGOMAT_INSTALLED_DATA)) GTEST_SKIP() << "a data file is installed";
  const std::string binary = path("elsewhere/lingomat");
  fs::create_directories(fs::path(binary).parent_path());
  fs::copy_file(LINGOMAT_CLI_BINARY, binary);
  const std::string file = write_file("x.al", "hi\n");
  const CliRun copied = run_program(binary, {file});
  EXPECT_EQ(copied.exit_code, 2);
  EXPECT_EQ(copied.out, "");
  EXPECT_NE(copied.err.find("no data file found"), std::string::npos) << copied.err;
  EXPECT_EQ(copied.err.find(LINGOMAT_SOURCE_TREE_DATA), std::string::npos) << copied.err;

  const CliRun built = run({file});
  if (fs::exists(LINGOMAT_SOURCE_TREE_DATA)) {
    EXPECT_EQ(built.exit_code, 0) << built.err;
  } else {
    EXPECT_NE(built.err.find(LINGOMAT_SOURCE_TREE_DATA), std::string::npos) << built.err;
  }
}

TEST_F(FilesTest, OutputThatCannotBeWrittenIsExitStatusOne) {
  const std::string file = write_file("x.al", "hi\n");
  const CliRun result =
      run_program(LINGOMAT_CLI_BINARY, {"--data", data_file_, file}, "", "/dev/full");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.err.find("lingomat: cannot write the output: No space left on device"),
            std::string::npos)
      << result.err;
  EXPECT_NE(run({"--help"}).out.find("or the output could not be written"), std::string::npos);
}

}  // namespace
}  // namespace lingomat_cli_test
