#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/engine.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::TempFile;

const char* const kSmallDataFile = R"json({
  "filenames": {"Make": ["Makefile"]}, "extnames": {"C": [".c"]}, "interpreters": {},
  "languages": {"C": 1}, "language_tokens": {"C": 2}, "tokens": {"C": {"int": 2}},
  "tokens_total": 2, "languages_total": 1})json";

EngineCreation create_from(const std::string& path) {
  Lingomat::Opts opts;
  opts.classifier.data_file = path;
  return create_engine(opts);
}

TEST(CreateEngine, BuildsAnEngineThatAnswers) {
  const TempFile file(kSmallDataFile);
  const EngineCreation created = create_from(file.path());
  ASSERT_NE(created.engine, nullptr) << created.reason;
  EXPECT_EQ(created.status, LINGOMAT_SUCCESS);
  EXPECT_EQ(created.reason, "");
  EXPECT_EQ(created.engine->identify("a.c", "x"), "C");
}

// The reason is the system's, once: callers put the file's name around it themselves.
TEST(CreateEngine, AFileThatCannotBeOpenedGivesTheBareReason) {
  const EngineCreation created = create_from("/nonexistent/lingomat/data.json");
  EXPECT_EQ(created.engine, nullptr);
  EXPECT_EQ(created.status, LINGOMAT_ERROR_FILE_IO);
  EXPECT_EQ(created.reason, "No such file or directory");
}

TEST(CreateEngine, AFolderOrADeviceIsRefusedWithItsReason) {
  EXPECT_EQ(create_from("/tmp").reason, "Is a directory");
  const EngineCreation device = create_from("/dev/null");
  EXPECT_EQ(device.status, LINGOMAT_ERROR_FILE_IO);
  EXPECT_EQ(device.reason, "not a regular file");
}

TEST(CreateEngine, MalformedContentGivesTheJsonStatusAndMessage) {
  const TempFile broken("{\"languages\": ");
  const EngineCreation created = create_from(broken.path());
  EXPECT_EQ(created.engine, nullptr);
  EXPECT_EQ(created.status, LINGOMAT_ERROR_JSON);
  EXPECT_FALSE(created.reason.empty());

  const TempFile missing(R"({"languages": {}})");
  EXPECT_EQ(create_from(missing.path()).reason, "JSON object missing expected key");
}

TEST(DataFileError, StatesItsReasonOnce) {
  try {
    read_data_file_names("/nonexistent/lingomat/data.json");
    FAIL() << "no exception";
  } catch (const std::exception& e) {
    EXPECT_STREQ(
        e.what(),
        "cannot load data file /nonexistent/lingomat/data.json: No such file or directory");
  }
}

TEST(ReadDataFileNames, ListsTheLookupsAndTheLanguagesInFileOrder) {
  const TempFile file(kSmallDataFile);
  const DataFileNames names = read_data_file_names(file.path());
  EXPECT_EQ(names.filenames, (LanguageNames{{"Make", {"Makefile"}}}));
  EXPECT_EQ(names.extnames, (LanguageNames{{"C", {".c"}}}));
  EXPECT_TRUE(names.interpreters.empty());
  EXPECT_EQ(names.languages, std::vector<std::string>{"C"});
}

}  // namespace
}  // namespace quillon::lingomat
