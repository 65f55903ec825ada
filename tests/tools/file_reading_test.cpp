// How the tools write their output, and read no more of a stream than identification needs.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
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
  write_file_atomically(dir / "out.json", std::string("\0second", 7));
  EXPECT_EQ(read_text(dir / "out.json"), std::string("\0second", 7));
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
