#include "base/file_reading.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "json/json_reader.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::TempFile;

// A FIFO nobody writes to, removed afterwards. Reading it the ordinary way blocks forever,
// so these tests rely on the test runner's timeout to catch a hang.
class Fifo {
 public:
  Fifo() {
    char dir[] = "/tmp/lingomat_fifo_XXXXXX";
    if (mkdtemp(dir) != nullptr) dir_ = dir;
    path_ = dir_ + "/data.json";
    created_ = mkfifo(path_.c_str(), 0600) == 0;
  }
  ~Fifo() {
    unlink(path_.c_str());
    rmdir(dir_.c_str());
  }
  Fifo(const Fifo&) = delete;
  Fifo& operator=(const Fifo&) = delete;
  const std::string& path() const { return path_; }
  bool created() const { return created_; }

 private:
  std::string dir_;
  std::string path_;
  bool created_ = false;
};

TEST(ReadDataFile, ReadsARegularFileWhole) {
  const std::string content = std::string("{\"a\": 1}\0tail", 13) + std::string(200'000, ' ');
  TempFile file(content);
  EXPECT_EQ(read_data_file(file.path()), content);
  TempFile empty("");
  EXPECT_EQ(read_data_file(empty.path()), "");
}

TEST(ReadDataFile, ReadsToTheEndWhenTheSizeIsNotKnownAhead) {
  // Files under /proc report a size of 0 but have content.
  const std::string status = read_data_file("/proc/self/status");
  EXPECT_EQ(status.rfind("Name:", 0), 0u);
  EXPECT_NE(status.find("VmRSS"), std::string::npos);
}

TEST(ReadDataFile, RefusesWhatIsNotARegularFileWithoutReadingIt) {
  Fifo fifo;
  ASSERT_TRUE(fifo.created());
  EXPECT_THROW(read_data_file(fifo.path()), std::ios_base::failure);
  EXPECT_THROW(read_data_file("/dev/zero"), std::ios_base::failure);
  EXPECT_THROW(read_data_file("/tmp"), std::ios_base::failure);
  EXPECT_THROW(read_data_file("/nonexistent/lingomat/data.json"), std::ios_base::failure);
  // The same refusals reach the engine's parser as stream failures, never JSON errors.
  EXPECT_THROW(parse_json_file(fifo.path()), std::ios_base::failure);
  EXPECT_THROW(parse_json_file("/dev/zero"), std::ios_base::failure);
}

TEST(ReadDataFile, TheCeilingIsInclusive) {
  TempFile file(std::string(100, ' '));
  EXPECT_EQ(read_data_file(file.path(), 100).size(), 100u);
  EXPECT_THROW(read_data_file(file.path(), 99), std::ios_base::failure);
  EXPECT_THROW(read_data_file(file.path(), 0), std::ios_base::failure);
}

TEST(ReadDataFile, AFileOverTheDefaultCeilingIsRefusedBeforeReading) {
  // Sparse: takes no disk space, and is refused on its size alone.
  TempFile file("");
  ASSERT_EQ(truncate(file.path().c_str(), static_cast<off_t>(kMaxDataFileBytes) + 1), 0);
  try {
    parse_json_file(file.path());
    FAIL() << "an over-ceiling file was accepted";
  } catch (const std::ios_base::failure& e) {
    EXPECT_NE(std::string(e.what()).find("larger than"), std::string::npos) << e.what();
  }
}

}  // namespace
}  // namespace quillon::lingomat
