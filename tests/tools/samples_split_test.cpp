#include <filesystem>

#include <gtest/gtest.h>

#include "common/options.h"
#include "common/samples_tree.h"
#include "common/split.h"
#include "common/tool_error.h"
#include "test_support.h"
#include "train/sample_selection.h"

namespace quillon::lingomat::tools {
namespace {

using test_support::TempDir;
using test_support::write_text;

std::string error_of(const std::function<void()>& action) {
  try {
    action();
  } catch (const ToolError& error) {
    return error.what();
  }
  return "(no error)";
}

TEST(SamplesTreeTest, ListsLanguagesProjectsAndNestedFilesInOrder) {
  TempDir dir;
  write_text(dir / "s/Python/proj-b/z.py", "z");
  write_text(dir / "s/Python/proj-a/pkg/sub/b.py", "b");
  write_text(dir / "s/Python/proj-a/a.py", "a");
  write_text(dir / "s/C++/lib/.clang-format", "dotfiles are samples too");
  std::filesystem::create_directories(dir / "s/C++/empty-project");

  const auto tree = walk_samples(dir / "s");
  ASSERT_EQ(tree.size(), 2u);
  EXPECT_EQ(tree[0].language, "C++");
  ASSERT_EQ(tree[0].files.size(), 1u);
  EXPECT_EQ(tree[0].files[0].relative_path, "lib/.clang-format");
  EXPECT_EQ(tree[0].projects(), (std::vector<std::string>{"lib"}));  // empty project ignored

  EXPECT_EQ(tree[1].language, "Python");
  std::vector<std::string> paths;
  for (const SampleFile& file : tree[1].files) paths.push_back(file.relative_path);
  EXPECT_EQ(paths, (std::vector<std::string>{"proj-a/a.py", "proj-a/pkg/sub/b.py", "proj-b/z.py"}));
  EXPECT_EQ(tree[1].files[1].project, "proj-a");
  EXPECT_EQ(test_support::read_text(tree[1].files[1].path), "b");
}

TEST(SamplesTreeTest, RejectsMalformedTrees) {
  TempDir dir;
  EXPECT_EQ(error_of([&] { walk_samples(dir / "none"); }),
            "samples folder " + (dir / "none") + " does not exist");
  write_text(dir / "file", "x");
  EXPECT_EQ(error_of([&] { walk_samples(dir / "file"); }),
            "samples folder " + (dir / "file") + " is not a folder");

  write_text(dir / "a/README", "x");
  EXPECT_NE(error_of([&] { walk_samples(dir / "a"); }).find("holds the file README"),
            std::string::npos);

  write_text(dir / "b/Go/main.go", "package main");
  EXPECT_NE(error_of([&] {
              walk_samples(dir / "b");
            }).find("sample " + (dir / "b/Go/main.go") + " is not inside a project folder"),
            std::string::npos);

  write_text(dir / "c/Go/proj/main.go", "package main");
  std::filesystem::create_directories(dir / "c/Rust/proj/src");
  EXPECT_EQ(error_of([&] { walk_samples(dir / "c"); }),
            "language folder " + (dir / "c/Rust") + " holds no sample file");
}

TEST(SplitTest, Fnv1aMatchesTheReferenceValues) {
  EXPECT_EQ(fnv1a_64(""), 0xcbf29ce484222325ULL);
  EXPECT_EQ(fnv1a_64("a"), 0xaf63dc4c8601ec8cULL);
  EXPECT_EQ(fnv1a_64("foobar"), 0x85944171f73967e8ULL);
}

TEST(SplitTest, HoldsOutEveryNthProjectInHashOrder) {
  // Hash order of these names: echo, delta, alpha, charlie, bravo.
  const std::vector<std::string> projects = {"alpha", "bravo", "charlie", "delta", "echo"};
  EXPECT_EQ(test_projects(projects, 3, 0), (std::vector<std::string>{"charlie", "echo"}));
  EXPECT_EQ(test_projects(projects, 3, 1), (std::vector<std::string>{"bravo", "delta"}));
  EXPECT_EQ(test_projects(projects, 3, 2), (std::vector<std::string>{"alpha"}));
  EXPECT_TRUE(test_projects({"only"}, 3, 0).empty());
  EXPECT_TRUE(test_projects({}, 2, 0).empty());
}

TEST(SplitTest, SidesPartitionTheFilesAndKeepATrainingProject) {
  LanguageSamples language{"Go", "Go", {}};
  for (const char* project : {"p1", "p2"}) {
    for (const char* file : {"a.go", "b.go"}) {
      language.files.push_back({project, std::string(project) + "/" + file, ""});
    }
  }
  for (std::uint64_t fold = 0; fold < 4; ++fold) {
    const auto train = select_split(language, {SplitSide::kTrain, 4, fold});
    const auto test = select_split(language, {SplitSide::kTest, 4, fold});
    EXPECT_EQ(train.size() + test.size(), 4u);
    EXPECT_FALSE(train.empty());
    for (const SampleFile& held_out : test) {
      for (const SampleFile& trained : train) EXPECT_NE(held_out.project, trained.project);
    }
  }
  EXPECT_EQ(select_split(language, {SplitSide::kAll, 3, 0}).size(), 4u);

  LanguageSamples single{"D", "D", {{"one", "one/a.d", ""}, {"one", "one/b.d", ""}}};
  EXPECT_EQ(select_split(single, {SplitSide::kTrain, 2, 0}).size(), 2u);
  EXPECT_TRUE(select_split(single, {SplitSide::kTest, 2, 0}).empty());
}

TEST(SplitTest, OptionsAreCheckedAfterParsing) {
  const auto finish = [](std::vector<const char*> args) {
    SplitOptions split;
    OptionParser parser("tool", "");
    split.add_to(parser);
    args.insert(args.begin(), "tool");
    parser.parse(static_cast<int>(args.size()), args.data());
    return split.finish();
  };
  const SplitRule rule = finish({"--split", "test", "--folds", "5", "--fold", "4"});
  EXPECT_EQ(rule.side, SplitSide::kTest);
  EXPECT_EQ(rule.folds, 5u);
  EXPECT_EQ(rule.fold, 4u);
  EXPECT_EQ(finish({}).side, SplitSide::kAll);
  EXPECT_THROW(finish({"--split", "held-out"}), UsageError);
  EXPECT_THROW(finish({"--folds", "1"}), UsageError);
  EXPECT_THROW(finish({"--folds", "3", "--fold", "3"}), UsageError);
}

TEST(CapSamplesTest, ChoosesTheSameSubsetWhateverTheInputOrder) {
  std::vector<SampleFile> files;
  for (int i = 0; i < 20; ++i) {
    files.push_back(
        {"p" + std::to_string(i % 4), "p" + std::to_string(i % 4) + "/f" + std::to_string(i), ""});
  }
  EXPECT_EQ(cap_samples(files, 0).size(), 20u);
  EXPECT_EQ(cap_samples(files, 25).size(), 20u);

  const auto chosen = cap_samples(files, 5);
  ASSERT_EQ(chosen.size(), 5u);
  std::vector<SampleFile> reversed(files.rbegin(), files.rend());
  auto chosen_again = cap_samples(reversed, 5);
  std::reverse(chosen_again.begin(), chosen_again.end());  // the input order is kept
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(chosen[i].relative_path, chosen_again[i].relative_path);
  }
  // A file that is not chosen does not change the choice by going away.
  auto fewer = files;
  fewer.erase(std::find_if(fewer.begin(), fewer.end(), [&](const SampleFile& f) {
    return std::none_of(chosen.begin(), chosen.end(),
                        [&](const SampleFile& c) { return c.relative_path == f.relative_path; });
  }));
  const auto chosen_from_fewer = cap_samples(fewer, 5);
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(chosen[i].relative_path, chosen_from_fewer[i].relative_path);
  }
}

}  // namespace
}  // namespace quillon::lingomat::tools
