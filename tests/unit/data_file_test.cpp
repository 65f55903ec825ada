// Every way a data file can be refused, with the status the C interface reports and the reason
// the tools print; and what must still load.
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>

#include "base/file_reading.h"
#include "engine/engine.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::TempDir;
using test_support::TempFile;

EngineCreation create_from(const std::string& path) { return create_engine({{}, {path}, {}}); }

constexpr int kOk = LINGOMAT_SUCCESS;
constexpr int kJson = LINGOMAT_ERROR_JSON;
constexpr int kFile = LINGOMAT_ERROR_FILE_IO;
const char* const kNotObject = "Expected JSON value to be an object";
const char* const kMissing = "JSON object missing expected key";
const char* const kType = "JSON value was of an unexpected type";
const char* const kNotString = "Expected JSON value to be a string";

const std::string kLookups = R"("filenames": {}, "extnames": {}, "interpreters": {})";
const std::string kCounts = R"("tokens_total": 1, "languages_total": 3)";
// The statistics of one language Foo, each part as given.
std::string foo(const char* samples, const char* total, const char* tokens) {
  return std::string(R"("languages": {"Foo": )") + samples + R"(}, "language_tokens": {"Foo": )" +
         total + R"(}, "tokens": {"Foo": )" + tokens + "}";
}
const std::string kFoo = foo("3", "1", R"({"t": 1})");
std::string data(const std::string& lookups, const std::string& stats,
                 const std::string& counts = kCounts) {
  return "{" + lookups + ", " + stats + ", " + counts + "}";
}
std::string lookups(const char* filenames, const char* extnames) {
  return std::string(R"("filenames": )") + filenames + R"(, "extnames": )" + extnames +
         R"(, "interpreters": {})";
}
std::string totals(const char* tokens_total, const char* languages_total) {
  return std::string(R"("tokens_total": )") + tokens_total + R"(, "languages_total": )" +
         languages_total;
}

struct Row {
  std::string name;  // for a path row, the path itself
  std::string content;
  int status;
  std::string reason;
  bool is_path = false;
};

// What cannot be read is a file error: a FIFO nobody writes to or an endless device would
// block or never end, so they are refused without being read (the timeout catches a hang).
TEST(DataFile, RefusalsWithTheirStatusAndReason) {
  const TempDir dir;
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);
  const TempFile sparse("");  // refused on its size alone, before any byte is read
  ASSERT_EQ(truncate(sparse.path().c_str(), static_cast<off_t>(kMaxDataFileBytes) + 1), 0);
  const std::string deep(1000, '[');  // the deepest nesting accepted
  const std::string no_languages = R"("languages": {}, "language_tokens": {}, "tokens": {})";
  const std::vector<Row> rows = {
      {"valid", data(kLookups, kFoo), kOk, ""},
      {"no languages", data(kLookups, no_languages), kOk, ""},
      {"NUL ends the text", data(kLookups, kFoo) + std::string(1, '\0') + "garbage", kOk, ""},
      {"whitespace around", "\r\n\t " + data(kLookups, kFoo) + " \n", kOk, ""},
      {"32-bit extremes", data(kLookups, kFoo, totals("2147483647", "-2147483648")), kOk, ""},
      {"empty", "", kJson, "The document is empty."},
      {"whitespace only", " \t\r\n", kJson, "The document is empty."},
      {"two roots", "{} {}", kJson, "The document root must not be followed by other values."},
      {"trailing comma", R"({"a": 1,})", kJson, "Missing a name for object member."},
      {"NaN", R"({"a": NaN})", kJson, "Invalid value."},
      {"cut short", "[[[", kJson, "Invalid value."},
      {"deep, cut short", deep, kJson, "Invalid value."},
      {"deep, no comma", deep + "1 2", kJson, "Missing a comma or ']' after an array element."},
      {"deep and whole", deep + std::string(1000, ']'), kJson, kNotObject},
      {"too deep", "[" + deep + std::string(1001, ']'), kJson, "nested deeper than 1000 levels"},
      {"far too deep", std::string(2'000'000, '['), kJson, "nested deeper than 1000 levels"},
      {"brackets in a string", R"({"a": ")" + deep + R"(\""} x)", kJson,
       "The document root must not be followed by other values."},
      {"root not an object", "[]", kJson, kNotObject},
      {"no language_tokens", data(kLookups, R"("tokens": {}, "languages": {})"), kJson, kMissing},
      {"language_tokens an array",
       data(kLookups, R"("language_tokens": [], "tokens": {}, "languages": {})"), kJson, kType},
      {"language without tokens",
       data(kLookups, R"("languages": {"Foo": 3}, "language_tokens": {"Foo": 1}, "tokens": {})"),
       kJson, kMissing},
      {"language without its total",
       data(kLookups, R"("languages": {"Foo": 3}, "language_tokens": {}, "tokens": {"Foo": {}})"),
       kJson, kMissing},
      {"tokens of a language an array", data(kLookups, foo("3", "1", "[]")), kJson, kType},
      {"count 2.0", data(kLookups, foo("3", "2.0", "{}")), kJson, kType},
      {"samples a string", data(kLookups, foo("\"3\"", "2", "{}")), kJson, kType},
      {"token count a string", data(kLookups, foo("3", "2", R"({"t": "1"})")), kJson, kType},
      {"no languages_total", data(kLookups, kFoo, R"("tokens_total": 1)"), kJson, kMissing},
      {"no tokens_total", data(kLookups, kFoo, R"("languages_total": 1)"), kJson, kMissing},
      {"total 3.0", data(kLookups, kFoo, totals("3.0", "1")), kJson, kType},
      {"total 1e3", data(kLookups, kFoo, totals("1e3", "1")), kJson, kType},
      {"total past 32 bits", data(kLookups, kFoo, totals("2147483648", "1")), kJson, kType},
      {"no extnames", data(R"("filenames": {}, "interpreters": {})", kFoo), kJson, kMissing},
      {"filenames an array", data(lookups("[]", "{}"), kFoo), kJson, kType},
      {"file names not a list", data(lookups(R"({"C": ".c"})", "{}"), kFoo), kJson, kType},
      {"a number among extensions", data(lookups("{}", R"({"C": [".c", 1]})"), kFoo), kJson,
       kNotString},
      {"/nonexistent/lingomat/data.json", "", kFile, "No such file or directory", true},
      {"", "", kFile, "No such file or directory", true},
      {dir.path(), "", kFile, "Is a directory", true},
      {dir / "fifo", "", kFile, "not a regular file", true},
      {"/dev/null", "", kFile, "not a regular file", true},
      {"/dev/zero", "", kFile, "not a regular file", true},
      {sparse.path(), "", kFile, "larger than " + std::to_string(kMaxDataFileBytes) + " bytes",
       true},
      // A file whose size is not known ahead is read to its end, not taken as empty.
      {"/proc/self/status", "", kJson, "Invalid value.", true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const TempFile file(row.content);
    const EngineCreation created = create_from(row.is_path ? row.name : file.path());
    EXPECT_EQ(created.status, row.status);
    EXPECT_EQ(created.reason, row.reason);
    EXPECT_EQ(created.engine != nullptr, row.status == kOk);
  }
  const TempFile hundred(std::string(100, ' '));
  EXPECT_EQ(read_data_file(hundred.path(), 100).size(), 100u);  // the ceiling is inclusive
  EXPECT_THROW(read_data_file(hundred.path(), 99), std::ios_base::failure);
}

}  // namespace
}  // namespace quillon::lingomat
