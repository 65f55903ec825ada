#include "common/file_io.h"

#include <sys/stat.h>

#include <filesystem>

#include <gtest/gtest.h>

#include "common/tool_error.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using testing::list_folder;
using testing::read_text;
using testing::TempDir;

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
  testing::write_text(dir / "taken/inside", "kept");
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

}  // namespace
}  // namespace quillon::lingomat::tools
