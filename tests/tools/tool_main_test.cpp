// How every tool ends: exit statuses and messages, and a progress line that stays off
// anything but a terminal.
#include <gtest/gtest.h>

#include <cstdio>
#include <new>
#include <stdexcept>

#include "common/progress_line.h"
#include "common/tool_error.h"
#include "common/tool_main.h"

namespace quillon::lingomat::tools {
namespace {

struct Ending {
  int status;
  std::string err;
};

Ending end_with(const std::function<int()>& body) {
  ::testing::internal::CaptureStderr();
  const int status = run_tool("tool", body);
  return {status, ::testing::internal::GetCapturedStderr()};
}

TEST(RunToolTest, EachFailureHasItsStatusAndOneMessage) {
  EXPECT_EQ(end_with([] { return 0; }).status, 0);
  EXPECT_EQ(end_with([] { return 3; }).status, 3);  // the body's own status passes through

  const Ending usage = end_with([]() -> int { throw UsageError("--x: bad"); });
  EXPECT_EQ(usage.status, 2);
  EXPECT_EQ(usage.err, "tool: --x: bad\nTry 'tool --help' for more information.\n");

  const Ending plain = end_with([]() -> int { throw ToolError("cannot read f"); });
  EXPECT_EQ(plain.status, 1);
  EXPECT_EQ(plain.err, "tool: cannot read f\n");
  EXPECT_EQ(end_with([]() -> int { throw ToolError("no data", 2); }).status, 2);

  const Ending memory = end_with([]() -> int { throw std::bad_alloc(); });
  EXPECT_EQ(memory.status, 1);
  EXPECT_EQ(memory.err, "tool: out of memory\n");
  const Ending other = end_with([]() -> int { throw std::logic_error("oops"); });
  EXPECT_EQ(other.status, 1);
  EXPECT_EQ(other.err, "tool: internal error: oops\n");
}

TEST(ProgressLineTest, DrawsNothingOffATerminal) {
  std::FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  {
    ProgressLine line(file, "label", 10 * kProgressMinFiles);
    line.update(1);
    line.update(5);
    line.clear();
  }
  EXPECT_EQ(std::ftell(file), 0L);
  std::fclose(file);
}

}  // namespace
}  // namespace quillon::lingomat::tools
