#include "common/input_text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include <gtest/gtest.h>

#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::TempDir;
using test_support::write_text;

// Text that differs at every position, so a wrongly placed or truncated view shows.
std::string numbered_text(std::size_t size) {
  std::string text;
  for (std::size_t line = 0; text.size() < size; ++line) text += std::to_string(line) + "\n";
  text.resize(size);
  return text;
}

// Feeds `content` through a pipe, the way a shell feeds standard input, and opens the
// reading end with `memory_limit`.
InputResult through_pipe(const std::string& content, std::size_t memory_limit) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  std::thread writer([&] {
    std::size_t done = 0;
    while (done < content.size()) {
      const ssize_t written = write(ends[1], content.data() + done, content.size() - done);
      if (written <= 0) break;
      done += static_cast<std::size_t>(written);
    }
    close(ends[1]);
  });
  InputResult result = open_input_descriptor(ends[0], memory_limit);
  writer.join();
  close(ends[0]);
  return result;
}

TEST(InputTextTest, FilesAreSeenWholeAndBinaryOnesAreSniffed) {
  TempDir dir;
  const std::string text = numbered_text(3'000'000);
  write_text(dir / "big.txt", text);
  InputResult big = open_input_file(dir / "big.txt");
  ASSERT_EQ(big.status, ReadStatus::kRead) << big.error;
  EXPECT_EQ(big.text.view(), text);

  write_text(dir / "empty.txt", "");
  InputResult empty = open_input_file(dir / "empty.txt");
  EXPECT_EQ(empty.status, ReadStatus::kRead);
  EXPECT_TRUE(empty.text.view().empty());

  write_text(dir / "binary", std::string("ab\0cd", 5));
  EXPECT_EQ(open_input_file(dir / "binary", true).status, ReadStatus::kBinary);
  EXPECT_EQ(open_input_file(dir / "binary", false).text.view(), std::string("ab\0cd", 5));
}

TEST(InputTextTest, FilesWithoutASizeAreReadInstead) {
  InputResult status = open_input_file("/proc/self/status");
  ASSERT_EQ(status.status, ReadStatus::kRead) << status.error;
  EXPECT_EQ(status.text.view().substr(0, 5), "Name:");
}

TEST(InputTextTest, WhatIsNotARegularFileIsRefused) {
  TempDir dir;
  EXPECT_EQ(open_input_file("/dev/zero").error, kNotRegularFile);
  EXPECT_EQ(open_input_file(dir.path()).error, "Is a directory");
  EXPECT_EQ(open_input_file(dir / "missing").error, "No such file or directory");
  const int folder = open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
  EXPECT_EQ(open_input_descriptor(folder).status, ReadStatus::kFailed);
  close(folder);
}

TEST(InputTextTest, AStreamIsKeptInMemoryOrSpooledButAlwaysSeenWhole) {
  const std::string text = numbered_text(2'500'000);
  for (const std::size_t limit :
       {std::size_t{0}, std::size_t{1000}, text.size(), text.size() + 1, kStreamMemoryBytes}) {
    InputResult result = through_pipe(text, limit);
    ASSERT_EQ(result.status, ReadStatus::kRead) << result.error;
    EXPECT_EQ(result.text.view(), text) << "limit " << limit;
  }
  InputResult empty = through_pipe("", 10);
  EXPECT_EQ(empty.status, ReadStatus::kRead);
  EXPECT_TRUE(empty.text.view().empty());
}

TEST(InputTextTest, ARegularFileOnADescriptorIsSeenFromItsOffset) {
  TempDir dir;
  write_text(dir / "in.txt", "skipped|kept");
  const int fd = open((dir / "in.txt").c_str(), O_RDONLY);
  ASSERT_EQ(lseek(fd, 8, SEEK_SET), 8);
  EXPECT_EQ(open_input_descriptor(fd).text.view(), "kept");
  ASSERT_EQ(lseek(fd, 0, SEEK_END), 12);
  InputResult at_end = open_input_descriptor(fd);
  EXPECT_EQ(at_end.status, ReadStatus::kRead);
  EXPECT_TRUE(at_end.text.view().empty());
  close(fd);
}

TEST(InputTextTest, MovingKeepsTheViewValid) {
  TempDir dir;
  write_text(dir / "mapped.txt", "mapped text");
  InputText mapped = std::move(open_input_file(dir / "mapped.txt").text);
  InputText in_memory(std::string("short"));  // a short string lives inside the object
  InputText moved = std::move(in_memory);
  EXPECT_EQ(moved.view(), "short");
  moved = std::move(mapped);
  EXPECT_EQ(moved.view(), "mapped text");
  EXPECT_TRUE(mapped.view().empty());
}

}  // namespace
}  // namespace quillon::lingomat::tools
