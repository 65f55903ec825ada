// The lingomat-check program: exit statuses, output, and files it must not read.
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::CommandResult;
using test_support::run_program;
using test_support::TempDir;
using test_support::write_text;

constexpr const char* kData =
    R"({"filenames": {}, "extnames": {"C": [".c"], "Zig": [".zig"]}, "interpreters": {},
 "languages": {"C": 1}, "language_tokens": {"C": 2}, "tokens": {"C": {"int": 2}},
 "tokens_total": 2, "languages_total": 1})";

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

CommandResult check(const std::vector<std::string>& args) {
  return run_program(LINGOMAT_CHECK_BINARY, args);
}

TEST(CheckCommand, WarningsPassUnlessStrict) {
  const TempDir dir;
  write_text(dir / "data.json", kData);
  const CommandResult plain = check({dir / "data.json"});
  EXPECT_EQ(plain.status, 0) << plain.out << plain.err;
  EXPECT_TRUE(contains(plain.out, dir / "data.json:1:45: warning: \"Zig\" has names")) << plain.out;
  EXPECT_TRUE(contains(plain.out, ": 0 errors, 1 warning\n")) << plain.out;
  EXPECT_EQ(check({"--strict", dir / "data.json"}).status, 1);
}

TEST(CheckCommand, ErrorsFailWithTheirLocation) {
  const TempDir dir;
  std::string data = kData;
  data.replace(data.find("\"tokens_total\": 2"), 17, "\"tokens_total\": -2");
  write_text(dir / "data.json", data);
  const CommandResult result = check({dir / "data.json"});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.out, dir / "data.json:3:18: error: \"tokens_total\" is -2"))
      << result.out;
  EXPECT_TRUE(contains(result.out, ": 1 error, 1 warning\n")) << result.out;
}

TEST(CheckCommand, UnreadableFilesFailWithoutHanging) {
  const TempDir dir;
  const CommandResult missing = check({dir / "absent.json"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_TRUE(contains(missing.err, "cannot read data file")) << missing.err;

  // Nobody writes to this pipe: reading it would block forever.
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);
  const CommandResult fifo = check({dir / "fifo"});
  EXPECT_EQ(fifo.status, 1);
  EXPECT_TRUE(contains(fifo.err, "not a regular file")) << fifo.err;

  EXPECT_EQ(check({dir.path()}).status, 1);
}

// The trainer checks what it is about to write: samples without a single token would give
// a language whose token count is 0, which the engine would divide by.
TEST(CheckCommand, TheTrainerRefusesToWriteAFileThatFailsTheCheck) {
  const TempDir dir;
  write_text(dir / "languages.def", "[C]\nextensions = .c\n\n[Blank]\nextensions = .blank\n");
  write_text(dir / "samples/C/p1/a.c", "int main(void) { return 0; }\n");
  write_text(dir / "samples/Blank/p1/a.blank", "\n");
  write_text(dir / "out.json", "previous");
  const CommandResult result = run_program(
      LINGOMAT_TRAIN_BINARY, {dir / "languages.def", dir / "samples", "-o", dir / "out.json"});
  EXPECT_EQ(result.status, 1) << result.out << result.err;
  EXPECT_TRUE(contains(result.err, "refusing to write a data file that fails its check"))
      << result.err;
  EXPECT_TRUE(contains(result.err, "the token count of \"Blank\" is 0")) << result.err;
  EXPECT_EQ(test_support::read_text(dir / "out.json"), "previous");
}

TEST(CheckCommand, BadCommandLinesExitWithTwo) {
  EXPECT_EQ(check({}).status, 2);
  EXPECT_EQ(check({"--no-such-option", "x"}).status, 2);
  EXPECT_EQ(check({"a.json", "b.json"}).status, 2);
}

}  // namespace
}  // namespace quillon::lingomat::tools
