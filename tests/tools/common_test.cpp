// The tools' shared behaviour: what their command lines refuse, how they end, how they
// write output and read input, definitions files, samples trees and the split.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <new>
#include <set>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "common/definitions.h"
#include "common/file_io.h"
#include "common/help_layout.h"
#include "common/input_text.h"
#include "common/samples_tree.h"
#include "common/split.h"
#include "common/tool_error.h"
#include "common/tool_main.h"
#include "input/identification_text.h"
#include "test_support.h"
#include "train/sample_selection.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::CommandResult;
using test_support::write_text;
using Strings = std::vector<std::string>;

template <typename Action>
std::string error_of(Action action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "(no error)";
}

// What the tools refuse before any work: status 2 for a bad command line, 1 for a data file
// that cannot be used, each with a message naming the culprit.
TEST(ToolCommands, RefuseBadCommandLinesAndUnusableDataFiles) {
  const test_support::TempDir dir;
  write_text(dir / "samples/C/p/a.c", "int x;\n");
  write_text(dir / "bad.json", "{\"filenames\": {}, ");
  const std::string train = LINGOMAT_TRAIN_BINARY, eval = LINGOMAT_EVAL_BINARY;
  const auto trains = [](Strings extra) {
    extra.insert(extra.begin(), {"defs", "samples", "-o", "out.json"});
    return extra;
  };
  const auto evals = [&](const std::string& data) { return Strings{data, dir / "samples"}; };
  const std::vector<std::tuple<std::string, Strings, int, std::string>> cases = {
      {train, {"defs", "samples"}, 2, "missing --output FILE"},
      {train, {"defs"}, 2, "missing argument SAMPLES"},
      {train, trains({"--folds", "1"}), 2, "--folds: expected at least 2"},
      {train, trains({"--fold", "3"}), 2, "--fold: expected 0 to 2, got 3"},
      {train, trains({"--split", "held-out"}), 2, "--split: expected train, test or all"},
      {train, trains({"--whole", "--max-bytes", "9"}), 2, "--whole cannot be combined"},
      {train, trains({"--discriminative-epochs", "2", "--learning-rate", "0"}), 2,
       "--learning-rate must be above 0"},
      {train, trains({"--discriminative-epochs", "2", "--margin", "-1"}), 2,
       "--margin must be from 0"},
      {train, trains({"--margin", "3"}), 2,
       "--learning-rate and --margin need --discriminative-epochs"},
      {eval, {"data.json", "samples", "--restrict"}, 2, "--restrict needs --only LANG"},
      {eval, evals(dir / "none.json"), 1,
       "cannot read data file " + (dir / "none.json") + ": No such file"},
      {eval, evals(dir.path()), 1, "cannot read data file " + dir.path() + ": Is a directory"},
      {eval, evals("/dev/zero"), 1, "cannot read data file /dev/zero: not a regular file"},
      {eval, evals(dir / "bad.json"), 1, "data file " + (dir / "bad.json") + " is not usable: "},
  };
  for (const auto& [program, args, status, message] : cases) {
    const CommandResult result = test_support::run_program(program, args);
    EXPECT_EQ(result.status, status) << message;
    EXPECT_NE(result.err.find(message), std::string::npos) << result.err << "\nlacks: " << message;
  }
  EXPECT_EQ(test_support::run_program(train, {"--version"}).out,
            std::string("lingomat-train ") + LINGOMAT_VERSION + "\n");
}

// Help text goes into the man pages, where a line that starts with '-' names an option.
TEST(HelpLayout, NoLineStartsWithADashAndNoneRunsLongWithoutNeed) {
  const std::string x(30, 'x'), z(44, 'z');
  for (const std::string& text :
       {x + " " + z + " --flag-like -1", "one " + x + " " + z + " -a -b -c --long-option",
        std::string(60, 'w') + " -n", "plain words " + std::string(70, 'v') + " end"}) {
    std::istringstream lines(help_entry("--term", text));
    std::string words;
    bool first = true;
    for (std::string line; std::getline(lines, line); first = false) {
      const std::string body = line.substr(kHelpColumn);
      if (!first) {
        EXPECT_NE(body[0], '-') << line;
      }
      // Only words that may not start a line may run past the width.
      if (line.size() > kHelpWidth) {
        std::istringstream rest(body.substr(std::min(body.size(), body.find(' '))));
        for (std::string word; rest >> word;) EXPECT_EQ(word[0], '-') << line;
      }
      words += (first ? "" : " ") + body;
    }
    EXPECT_EQ(words, text);
  }
}

TEST(RunToolTest, EachFailureHasItsStatusAndOneMessage) {
  const std::vector<std::tuple<std::function<int()>, int, std::string>> cases = {
      {[]() -> int { throw ToolError("no data", 4); }, 4, "tool: no data\n"},
      {[]() -> int { throw UsageError("--x: bad"); }, 2,
       "tool: --x: bad\nTry 'tool --help' for more information.\n"},
      {[]() -> int { throw std::bad_alloc(); }, 1, "tool: out of memory\n"},
      {[]() -> int { throw std::logic_error("oops"); }, 1, "tool: internal error: oops\n"},
  };
  for (const auto& [body, status, message] : cases) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(run_tool("tool", body), status) << message;
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), message);
  }
}

TEST(DefinitionsTest, RepeatedKeysAccumulateEachValueOnce) {
  const auto definitions = parse_definitions(
      "# comment\r\n\n[Python]\nextensions = .py .pyi\n  # indented\nfilenames = SConstruct\n"
      "extensions = .pyw .py\r\n[Graphviz (DOT)]\nextensions =\t.dot\t.gv\n[ Empty ]\n",
      "defs");
  const auto& languages = definitions.languages();
  ASSERT_EQ(languages.size(), 3u);
  EXPECT_EQ(languages[0].line, 3);
  EXPECT_EQ(languages[0].extensions, (Strings{".py", ".pyi", ".pyw"}));
  EXPECT_EQ(languages[0].filenames, Strings{"SConstruct"});
  EXPECT_EQ(languages[1].extensions, (Strings{".dot", ".gv"}));
  EXPECT_EQ(languages[2].name, "Empty");
}

// What the trainer is given wrong is named with its file and line, or its folder.
TEST(DefinitionsTest, MalformedDefinitionsAndSamplesTreesNameWhatIsWrong) {
  const test_support::TempDir dir;
  write_text(dir / "a/README", "x");
  write_text(dir / "b/Go/main.go", "package main");
  std::filesystem::create_directories(dir / "c/Go/empty-project");
  const auto definitions = [](std::string text) {
    return [=] { parse_definitions(text, "defs"); };
  };
  const auto tree = [](std::string root) { return [=] { walk_samples(root); }; };
  const std::vector<std::pair<std::function<void()>, std::string>> cases = {
      {definitions("extensions = .c\n"), "defs:1: 'extensions' comes before any '[Language]'"},
      {definitions("[C]\n\n.c .h\n"), "defs:3: expected '[Language]', 'key = values'"},
      {definitions("[C\n"), "defs:1: section header '[C' lacks its closing ']'"},
      {definitions("[C]\n[Java]\n[C]\n"), "defs:3: language 'C' is already defined on line 1"},
      {definitions("[C]\nextensions = .tar.gz\n"), "defs:2: extension '.tar.gz' must be one dot"},
      {definitions("[A/B]\n"), "defs:1: language name 'A/B' contains '/'"},
      {definitions("[C]\nfilenames = caf\xE9\n"), "defs:2: not valid UTF-8"},
      {definitions("# only a comment\n"), "defs: defines no language"},
      {tree(dir / "a/README"), "samples folder " + (dir / "a/README") + " is not a folder"},
      {tree(dir / "a"), "holds the file README"},
      {tree(dir / "b"), "sample " + (dir / "b/Go/main.go") + " is not inside a project folder"},
      {tree(dir / "c"), "language folder " + (dir / "c/Go") + " holds no sample file"},
  };
  for (const auto& [action, message] : cases) {
    const std::string error = error_of(action);
    EXPECT_NE(error.find(message), std::string::npos) << error << " lacks " << message;
  }
}

TEST(SplitTest, HoldsOutEveryNthProjectInHashOrderAndCapsStably) {
  // The published vectors of 64-bit FNV-1a: the Python tools hold out the same projects.
  EXPECT_EQ(fnv1a_64(""), 0xcbf29ce484222325ULL);
  EXPECT_EQ(fnv1a_64("foobar"), 0x85944171f73967e8ULL);
  // Hash order of these names: echo, delta, alpha, charlie, bravo.
  const Strings projects = {"alpha", "bravo", "charlie", "delta", "echo"};
  EXPECT_EQ(test_projects(projects, 3, 0), (Strings{"charlie", "echo"}));
  EXPECT_EQ(test_projects(projects, 3, 2), Strings{"alpha"});
  EXPECT_TRUE(test_projects({"only"}, 3, 0).empty());

  std::vector<SampleFile> files;
  for (int i = 0; i < 20; ++i) files.push_back({projects[i % 4], std::to_string(i), ""});
  // A capped choice depends neither on the input order nor on files left out going away.
  const auto capped = [](const std::vector<SampleFile>& files) {
    std::set<std::string> names;
    for (const auto& file : cap_samples(files, 5)) names.insert(file.relative_path);
    return names;
  };
  const auto chosen = capped(files);
  ASSERT_EQ(chosen.size(), 5u);
  EXPECT_EQ(capped({files.rbegin(), files.rend()}), chosen);
  files.erase(std::find_if(files.begin(), files.end(),
                           [&](const auto& file) { return !chosen.count(file.relative_path); }));
  EXPECT_EQ(capped(files), chosen);
}

// mkstemp makes files for their owner only; a data file is for whoever the umask allows.
TEST(FileIoTest, ReplacesWholeFilesWithTheModeTheUmaskAllows) {
  const mode_t mask = umask(0);
  umask(mask);
  const test_support::TempDir dir;
  write_file_atomically(dir / "out.json", "first");
  write_file_atomically(dir / "out.json", std::string("\0second", 7));
  EXPECT_EQ(test_support::read_text(dir / "out.json"), std::string("\0second", 7));
  EXPECT_EQ(test_support::list_folder(dir.path()), std::vector<std::string>{"out.json"});
  struct stat info {};
  ASSERT_EQ(stat((dir / "out.json").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0666 & ~mask);
  EXPECT_EQ(umask(mask), mask);  // writing leaves the process's umask as it was
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
