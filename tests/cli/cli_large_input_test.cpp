// Inputs larger than what identification reads: only a prefix is read, and the answer is
// always the one the library gives for the whole input.
#include <unistd.h>

#include "cli_harness.h"

namespace lingomat_cli_test {
namespace {

constexpr std::size_t kMiB = std::size_t{1} << 20;

class LargeInputTest : public CliTest {
 protected:
  // Runs the tool on standard input through a shell: `input` "|" pipes `file` in through cat,
  // "<" redirects it.
  CliRun run_on_stdin(const std::string& file, const std::string& input) const {
    const std::string tool = "\"$1\" --data \"$2\" --min-tokens 40 --min-score -8 -";
    const std::string script = input == "|" ? "cat \"$0\" | " + tool : tool + " < \"$0\"";
    return run_program("/bin/sh", {"-c", script, file, LINGOMAT_CLI_BINARY, data_file_});
  }
};

TEST_F(LargeInputTest, AStringClosedFarBeyondTheLimitsStillCounts) {
  // The opening quote starts a string literal; whether it is closed decides whether the
  // words after it are tokens, and the closing quote lies past the in-memory part of a stream.
  const std::string head = "\"" + words("beta", 60) + std::string(17 * kMiB, ' ');
  const std::string closed = write_file("closed.txt", head + "\"\n");
  const std::string open = write_file("open.txt", head + "\n");

  const CliRun closed_file = run_with_data({closed});
  const CliRun open_file = run_with_data({open});
  ASSERT_EQ(open_file.exit_code, 0) << open_file.err;
  EXPECT_EQ(open_file.out, open + "\tBeta\n");
  EXPECT_NE(closed_file.out, closed + "\tBeta\n") << "the closed string hides every word";

  for (const char* input : {"|", "<"}) {
    const CliRun piped_closed = run_on_stdin(closed, input);
    const CliRun piped_open = run_on_stdin(open, input);
    ASSERT_EQ(piped_open.exit_code, 0) << piped_open.err;
    EXPECT_EQ(piped_open.out, "-\tBeta\n") << input;
    EXPECT_EQ(piped_closed.out, "-" + closed_file.out.substr(closed.size())) << input;
  }
}

TEST_F(LargeInputTest, ASparseFileIsIdentifiedFromItsBeginning) {
  const std::string file = write_file("sparse.txt", words("alpha", 60));
  ASSERT_EQ(truncate(file.c_str(), 64 * kMiB), 0);
  const CliRun named = run_with_data({file});
  ASSERT_EQ(named.exit_code, 0) << named.err;
  EXPECT_EQ(named.out, file + "\tAlpha\n");
  EXPECT_EQ(run_on_stdin(file, "<").out, "-\tAlpha\n");
  EXPECT_EQ(run_on_stdin(file, "|").out, "-\tAlpha\n");
}

}  // namespace
}  // namespace lingomat_cli_test
