// How the tools read samples, data files and inputs, and write their output.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "common/file_io.h"
#include "common/input_text.h"
#include "common/tool_error.h"
#include "input/identification_text.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::read_text;
using test_support::TempDir;
using test_support::write_text;

TEST(FileIoTest, WritesWholeFilesWithTheUmasksModeAndLeavesNothingOnFailure) {
  const mode_t mask = umask(0);
  umask(mask);
  const TempDir dir;
  write_file_atomically(dir / "out.json", "first");
  write_file_atomically(dir / "out.json", std::string("second\0binary", 13));
  EXPECT_EQ(read_file(dir / "out.json", "x"), std::string("second\0binary", 13));
  struct stat info {};
  ASSERT_EQ(stat((dir / "out.json").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0666 & ~mask);
  EXPECT_EQ(umask(mask), mask);  // writing leaves the process's umask as it was

  EXPECT_THROW(write_file_atomically(dir / "missing/out.json", "x"), ToolError);
  write_text(dir / "taken/inside", "kept");
  EXPECT_THROW(write_file_atomically(dir / "taken", "x"), ToolError);
  EXPECT_EQ(read_text(dir / "taken/inside"), "kept");
  EXPECT_EQ(test_support::list_folder(dir.path()), (std::vector<std::string>{"out.json", "taken"}));
}

// Anything but a regular file could be endless (/dev/zero) or block (a FIFO).
TEST(FileIoTest, OnlyRegularFilesAreReadAndErrorsNameTheFileAndItsRole) {
  const TempDir dir;
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", dir / "zero-link");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"/dev/zero", "not a regular file"},         {"/dev/null", "not a regular file"},
      {dir / "fifo", "not a regular file"},        {dir / "zero-link", "not a regular file"},
      {dir / "none", "No such file or directory"}, {dir.path(), "Is a directory"},
  };
  for (const auto& [path, reason] : cases) {
    EXPECT_EQ(open_input_file(path).error, reason) << path;
    try {
      read_file(path, "sample");
      ADD_FAILURE() << path;
    } catch (const ToolError& error) {
      EXPECT_EQ(std::string(error.what()), "cannot read sample " + path + ": " + reason);
    }
  }
  // A link to a regular file is read; a NUL in the sniffed head marks a file binary.
  write_text(dir / "image", std::string("PNG\0\x01", 5) + std::string(kBinarySniffBytes, 'a'));
  std::filesystem::create_symlink(dir / "image", dir / "link");
  EXPECT_EQ(try_read_file(dir / "link").content.size(), kBinarySniffBytes + 5);
  EXPECT_EQ(try_read_file(dir / "link", true).status, ReadStatus::kBinary);
  EXPECT_EQ(open_input_file(dir / "link", true).status, ReadStatus::kBinary);
  const std::string late = std::string(kBinarySniffBytes, 'a') + std::string(1, '\0');
  write_text(dir / "late", late);
  EXPECT_EQ(try_read_file(dir / "late", true).content, late);
  const int folder = open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
  EXPECT_EQ(open_input_descriptor(folder).status, ReadStatus::kFailed);
  close(folder);
}

// Text that differs at every position, so a wrongly placed or truncated view shows.
std::string numbered_text(std::size_t size) {
  std::string text;
  for (std::size_t line = 0; text.size() < size; ++line) text += std::to_string(line) + "\n";
  text.resize(size);
  return text;
}

// Feeds `content` through a pipe, the way a shell feeds standard input, and reads it.
InputResult through_pipe(const std::string& content, const Tokenizer* tokenizer,
                         std::size_t ceiling = kMaxInputBytes) {
  std::signal(SIGPIPE, SIG_IGN);  // the writer of a stream read only in part gets EPIPE
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  std::thread writer([&] {
    for (std::size_t done = 0; done < content.size();) {
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

TEST(InputTextTest, FilesAreReadWholeWithoutATokenizerFromTheirOffset) {
  const TempDir dir;
  const std::string text = numbered_text(3'000'000);
  write_text(dir / "big.txt", text);
  EXPECT_EQ(open_input_file(dir / "big.txt").text, text);
  // Files that report no size are read all the same.
  EXPECT_EQ(open_input_file("/proc/self/status").text.substr(0, 5), "Name:");

  write_text(dir / "in.txt", "skipped|kept");
  const int fd = open((dir / "in.txt").c_str(), O_RDONLY);
  ASSERT_EQ(lseek(fd, 8, SEEK_SET), 8);
  EXPECT_EQ(open_input_descriptor(fd).text, "kept");
  EXPECT_EQ(open_input_descriptor(fd).text, "");  // at its end now
  close(fd);
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
  // An endless stream stops at the ceiling; below it the whole stream is seen.
  const Tokenizer unlimited(Tokenizer::Opts{0, 0});
  const std::string text = numbered_text(1'000'000);
  const InputResult read = through_pipe(text, &unlimited, 100'000);
  EXPECT_TRUE(read.truncated);
  EXPECT_EQ(read.text, text.substr(0, 100'000));
  EXPECT_EQ(through_pipe(text, &unlimited).text, text);
}

}  // namespace
}  // namespace quillon::lingomat::tools
