#include "common/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include <gtest/gtest.h>

#include "common/tool_error.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::list_folder;
using test_support::read_text;
using test_support::TempDir;

TEST(FileIoTest, WritesAndReplacesWholeFiles) {
  TempDir dir;
  write_file_atomically(dir / "out.json", "first");
  EXPECT_EQ(read_text(dir / "out.json"), "first");
  write_file_atomically(dir / "out.json", std::string("second\0binary", 13));
  EXPECT_EQ(read_file(dir / "out.json", "x"), std::string("second\0binary", 13));
  EXPECT_EQ(list_folder(dir.path()), (std::vector<std::string>{"out.json"}));

  struct stat info {};
  ASSERT_EQ(stat((dir / "out.json").c_str(), &info), 0);
  EXPECT_NE(info.st_mode & S_IRGRP, 0u) << "a data file is for everyone to read";
}

TEST(FileIoTest, FailedWritesNameTheFileAndLeaveNothingBehind) {
  TempDir dir;
  try {
    write_file_atomically(dir / "missing/out.json", "x");
    ADD_FAILURE();
  } catch (const ToolError& error) {
    EXPECT_EQ(std::string(error.what()), "cannot write output file " + (dir / "missing/out.json") +
                                             ": No such file or directory");
  }
  std::filesystem::create_directories(dir / "taken");
  test_support::write_text(dir / "taken/inside", "kept");
  EXPECT_THROW(write_file_atomically(dir / "taken", "x"), ToolError);
  EXPECT_EQ(read_text(dir / "taken/inside"), "kept");
  EXPECT_EQ(list_folder(dir.path()), (std::vector<std::string>{"taken"}));
}

TEST(FileIoTest, ReadErrorsNameTheFileAndItsRole) {
  TempDir dir;
  try {
    read_file(dir / "nope.c", "sample");
    ADD_FAILURE();
  } catch (const ToolError& error) {
    EXPECT_EQ(std::string(error.what()),
              "cannot read sample " + (dir / "nope.c") + ": No such file or directory");
  }
  try {
    read_file(dir.path(), "sample");
    ADD_FAILURE();
  } catch (const ToolError& error) {
    EXPECT_EQ(std::string(error.what()), "cannot read sample " + dir.path() + ": Is a directory");
  }
}

TEST(FileIoTest, NewFilesGetTheModeTheUmaskAllows) {
  const mode_t mask = umask(0);
  umask(mask);
  TempDir dir;
  write_file_atomically(dir / "out.json", "x");
  struct stat info {};
  ASSERT_EQ(stat((dir / "out.json").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0666 & ~mask);
  // Writing must not leave the process's umask changed.
  const mode_t after = umask(0);
  umask(after);
  EXPECT_EQ(after, mask);
}

// Anything but a regular file could be endless (/dev/zero) or block (a FIFO).
TEST(FileIoTest, OnlyRegularFilesAreRead) {
  TempDir dir;
  const std::string fifo = dir / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", dir / "zero-link");
  for (const std::string& path :
       {std::string("/dev/zero"), std::string("/dev/null"), fifo, dir / "zero-link"}) {
    const ReadResult result = try_read_file(path);
    EXPECT_EQ(result.status, ReadStatus::kFailed) << path;
    EXPECT_EQ(result.error, "not a regular file") << path;
    EXPECT_EQ(read_problem(path), "not a regular file") << path;
    try {
      read_file(path, "sample");
      ADD_FAILURE() << path;
    } catch (const ToolError& error) {
      EXPECT_EQ(std::string(error.what()), "cannot read sample " + path + ": not a regular file");
    }
  }
  EXPECT_EQ(read_problem(dir.path()), "Is a directory");
  EXPECT_EQ(read_problem(dir / "none"), "No such file or directory");
  test_support::write_text(dir / "ok", "fine");
  EXPECT_EQ(read_problem(dir / "ok"), "");
  std::filesystem::create_symlink(dir / "ok", dir / "ok-link");
  EXPECT_EQ(try_read_file(dir / "ok-link").content, "fine");
}

TEST(FileIoTest, DescriptorsAreReadAsStreams) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "piped", 5), 5);
  close(ends[1]);
  const ReadResult result = try_read_descriptor(ends[0]);
  close(ends[0]);
  EXPECT_EQ(result.status, ReadStatus::kRead);
  EXPECT_EQ(result.content, "piped");
}

TEST(FileIoTest, BinaryFilesAreAbandonedOnlyWhenAsked) {
  TempDir dir;
  const std::string binary(std::string("PNG\0\x01", 5) + std::string(100000, 'x'));
  test_support::write_text(dir / "image", binary);
  // A NUL beyond the sniffed head does not make a file binary.
  const std::string late = std::string(kBinarySniffBytes, 'a') + std::string(1, '\0');
  test_support::write_text(dir / "late", late);

  const ReadResult skipped = try_read_file(dir / "image", true);
  EXPECT_EQ(skipped.status, ReadStatus::kBinary);
  EXPECT_EQ(skipped.content, "");
  EXPECT_EQ(try_read_file(dir / "image", false).content, binary);
  const ReadResult text = try_read_file(dir / "late", true);
  EXPECT_EQ(text.status, ReadStatus::kRead);
  EXPECT_EQ(text.content, late);
}

}  // namespace
}  // namespace quillon::lingomat::tools
