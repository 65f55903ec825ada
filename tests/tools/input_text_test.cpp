#include "common/input_text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "input/identification_text.h"
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

// Feeds `content` through a pipe, the way a shell feeds standard input, and reads it.
InputResult through_pipe(const std::string& content, const Tokenizer* tokenizer = nullptr,
                         std::size_t ceiling = kMaxInputBytes) {
  std::signal(SIGPIPE, SIG_IGN);  // the writer of a stream read only in part gets EPIPE
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
  InputResult result = open_input_descriptor(ends[0], false, tokenizer, ceiling);
  close(ends[0]);  // a writer still blocked on a full pipe gets EPIPE and stops
  writer.join();
  return result;
}

TEST(InputTextTest, FilesAreReadWholeWithoutATokenizerAndBinaryOnesAreSniffed) {
  TempDir dir;
  const std::string text = numbered_text(3'000'000);
  write_text(dir / "big.txt", text);
  InputResult big = open_input_file(dir / "big.txt");
  ASSERT_EQ(big.status, ReadStatus::kRead) << big.error;
  EXPECT_EQ(big.text, text);
  EXPECT_EQ(big.size, text.size());

  write_text(dir / "empty.txt", "");
  InputResult empty = open_input_file(dir / "empty.txt");
  EXPECT_EQ(empty.status, ReadStatus::kRead);
  EXPECT_TRUE(empty.text.empty());

  write_text(dir / "binary", std::string("ab\0cd", 5));
  EXPECT_EQ(open_input_file(dir / "binary", true).status, ReadStatus::kBinary);
  EXPECT_EQ(open_input_file(dir / "binary", false).text, std::string("ab\0cd", 5));

  // Files that report no size are read all the same.
  InputResult status = open_input_file("/proc/self/status");
  ASSERT_EQ(status.status, ReadStatus::kRead) << status.error;
  EXPECT_EQ(status.text.substr(0, 5), "Name:");
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

// What is read of an input must tokenize exactly as the whole input does, however the
// input's first steps run on: that is what lets the tool read a prefix only.
TEST(InputTextTest, ThePrefixReadTokenizesAsTheWholeInput) {
  const std::string filler = numbered_text(400'000);
  const std::vector<std::string> inputs = {
      "int main() { return 0; }\n" + filler,
      "/* never closed\n" + filler,
      "#!/usr/bin/env " + std::string(300'000, 'p') + "\n" + filler,
      "<tag " + filler + ">",
      "'open" + filler,
      std::string("\xFF\xFE", 2) + "x\0=\0y\0\n\0" + filler,  // UTF-16 with a byte-order mark
      std::string(200'000, '\n') + "# c\nword " + filler,
  };
  for (const auto& [max_bytes, max_tokens] :
       std::vector<std::pair<std::uint64_t, std::uint64_t>>{{10240, 500}, {100, 0}, {0, 50}}) {
    const Tokenizer tokenizer(Tokenizer::Opts{max_bytes, max_tokens});
    for (const std::string& input : inputs) {
      const InputResult read = through_pipe(input, &tokenizer);
      ASSERT_EQ(read.status, ReadStatus::kRead) << read.error;
      EXPECT_FALSE(read.truncated);
      EXPECT_EQ(tokenizer.extract_tokens(IdentificationText(read.text, tokenizer).view()),
                tokenizer.extract_tokens(IdentificationText(input, tokenizer).view()))
          << input.substr(0, 20) << "... limits " << max_bytes << "/" << max_tokens;
    }
  }
}

TEST(InputTextTest, AnEndlessStreamStopsAtTheCeiling) {
  const Tokenizer unlimited(Tokenizer::Opts{0, 0});
  const std::string text = numbered_text(1'000'000);
  const InputResult read = through_pipe(text, &unlimited, 100'000);
  EXPECT_EQ(read.status, ReadStatus::kRead);
  EXPECT_TRUE(read.truncated);
  EXPECT_EQ(read.text, text.substr(0, 100'000));
  // Below the ceiling the whole stream is seen.
  EXPECT_EQ(through_pipe(text, &unlimited).text, text);
}

TEST(InputTextTest, ARegularFileOnADescriptorIsReadFromItsOffset) {
  TempDir dir;
  write_text(dir / "in.txt", "skipped|kept");
  const int fd = open((dir / "in.txt").c_str(), O_RDONLY);
  ASSERT_EQ(lseek(fd, 8, SEEK_SET), 8);
  EXPECT_EQ(open_input_descriptor(fd).text, "kept");
  ASSERT_EQ(lseek(fd, 0, SEEK_END), 12);
  InputResult at_end = open_input_descriptor(fd);
  EXPECT_EQ(at_end.status, ReadStatus::kRead);
  EXPECT_TRUE(at_end.text.empty());
  close(fd);
}

}  // namespace
}  // namespace quillon::lingomat::tools
