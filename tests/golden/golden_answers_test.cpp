// The shipped data file's answers on short programs written for this test
// (samples.txt), through the C interface with the library's defaults, against the answers
// recorded in answers.tsv. Fewer right answers than recorded, by content alone or with the
// file name, fail: a retrained data file must not lose accuracy unnoticed. After a retrain
// that answers as well or better, record the new answers with
//   LINGOMAT_GOLDEN_UPDATE=1 build/tests/golden/lingomat_golden_test
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lingomat.h"

namespace {

struct Sample {
  std::string language;
  std::string file_name;
  std::string text;
};

struct Answers {
  std::string by_content;
  std::string with_name;
};

std::string read_file(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// "== LANGUAGE | FILE NAME" starts a sample; lines before the first are comments.
std::vector<Sample> read_samples() {
  std::vector<Sample> samples;
  std::istringstream in(read_file(LINGOMAT_GOLDEN_SAMPLES));
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("== ", 0) == 0) {
      const std::size_t bar = line.find(" | ");
      samples.push_back({line.substr(3, bar - 3), line.substr(bar + 3), ""});
    } else if (!samples.empty()) {
      samples.back().text += line + "\n";
    }
  }
  return samples;
}

// File name -> recorded answers ("-" for none).
std::map<std::string, Answers> read_recorded() {
  std::map<std::string, Answers> recorded;
  std::istringstream in(read_file(LINGOMAT_GOLDEN_ANSWERS));
  for (std::string line; std::getline(in, line);) {
    std::istringstream fields(line);
    std::string name;
    Answers answers;
    if (std::getline(fields, name, '\t') && std::getline(fields, answers.by_content, '\t') &&
        std::getline(fields, answers.with_name)) {
      recorded[name] = answers;
    }
  }
  return recorded;
}

class Engine {
 public:
  Engine() {
    LingomatOpts opts{};
    lingomatOptsInitWithDefaults(&opts);
    opts.dataFile = LINGOMAT_TEST_DATA;
    EXPECT_EQ(lingomatCreate(&handle_, &opts), LINGOMAT_SUCCESS);
  }
  ~Engine() { lingomatDestroy(&handle_); }
  std::string identify(const std::string& text, const char* file_name) const {
    const char* language = nullptr;
    EXPECT_EQ(lingomatIdentifyCode(handle_, text.data(), text.size(), file_name, &language),
              LINGOMAT_SUCCESS);
    return language != nullptr ? language : "-";
  }

 private:
  LingomatHandle handle_ = nullptr;
};

TEST(GoldenAnswers, TheShippedDataFileAnswersAsWellAsRecorded) {
  const std::vector<Sample> samples = read_samples();
  ASSERT_GE(samples.size(), 50u);
  const std::map<std::string, Answers> recorded = read_recorded();
  const Engine engine;

  int right_now[2] = {0, 0};
  int right_before[2] = {0, 0};
  std::ostringstream record;
  for (const Sample& sample : samples) {
    const Answers now{engine.identify(sample.text, nullptr),
                      engine.identify(sample.text, sample.file_name.c_str())};
    record << sample.file_name << '\t' << now.by_content << '\t' << now.with_name << '\n';
    right_now[0] += now.by_content == sample.language;
    right_now[1] += now.with_name == sample.language;
    const auto before = recorded.find(sample.file_name);
    if (before == recorded.end()) continue;
    right_before[0] += before->second.by_content == sample.language;
    right_before[1] += before->second.with_name == sample.language;
    if (before->second.by_content != now.by_content || before->second.with_name != now.with_name) {
      std::cout << sample.file_name << " (" << sample.language << "): was "
                << before->second.by_content << " / " << before->second.with_name << ", now "
                << now.by_content << " / " << now.with_name << "\n";
    }
  }
  std::cout << samples.size() << " samples: " << right_now[0] << " right by content (recorded "
            << right_before[0] << "), " << right_now[1] << " with the file name (recorded "
            << right_before[1] << ")\n";
  if (std::getenv("LINGOMAT_GOLDEN_UPDATE") != nullptr) {
    std::ofstream(LINGOMAT_GOLDEN_ANSWERS) << record.str();
    GTEST_SKIP() << "recorded in " << LINGOMAT_GOLDEN_ANSWERS;
  }
  ASSERT_EQ(recorded.size(), samples.size()) << "record the answers (see the file's header)";
  EXPECT_GE(right_now[0], right_before[0]) << "fewer right answers by content than recorded";
  EXPECT_GE(right_now[1], right_before[1]) << "fewer right answers with file names than recorded";
}

}  // namespace
