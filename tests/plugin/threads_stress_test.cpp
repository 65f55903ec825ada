// Many threads share one engine through the C interface and must get exactly the answers
// one thread gets. Built under ThreadSanitizer, this is the data-race check of identification.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "lingomat.h"

namespace {

struct Input {
  std::string code;
  std::string file_name;  // empty: none given
};

// Texts of several languages, tags, shebangs and bytes of every value, with and without names.
std::vector<Input> varied_inputs() {
  const std::vector<std::string> texts = {
      "#include <stdio.h>\nint main(void) { printf(\"hi\\n\"); return 0; }\n",
      "def main():\n    print('hi')\n\nif __name__ == '__main__':\n    main()\n",
      "#!/bin/sh\nset -e\nfor f in *; do echo \"$f\"; done\n",
      "<html><head><title>x</title></head><body><a href=\"y\">z</a></body></html>\n",
      "package main\n\nimport \"fmt\"\n\nfunc main() { fmt.Println(\"hi\") }\n",
      "SELECT name FROM users WHERE id = 1;\n",
      "{\"key\": [1, 2, 3], \"other\": null}\n",
      "",
  };
  const std::vector<std::string> names = {"", "a.c", "a.py", "Makefile", "x.unknown", "b.h"};
  std::vector<Input> inputs;
  for (const std::string& text : texts) {
    // Long enough for the classifier's minimum token count.
    std::string repeated;
    for (int i = 0; i < 8; ++i) repeated += text;
    for (const std::string& name : names) inputs.push_back({repeated, name});
  }
  std::mt19937 random(7);
  for (int i = 0; i < 8; ++i) {
    std::string bytes(512, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random() & 0xff);
    inputs.push_back({bytes, i % 2 == 0 ? "" : "r.txt"});
  }
  return inputs;
}

const char* identify(LingomatHandle engine, const Input& input) {
  const char* language = nullptr;
  const int status =
      lingomatIdentifyCode(engine, input.code.data(), input.code.size(),
                           input.file_name.empty() ? nullptr : input.file_name.c_str(), &language);
  return status == LINGOMAT_SUCCESS ? language : "(failed)";
}

TEST(ThreadsStress, ManyThreadsOnOneEngineGetTheSingleThreadedAnswers) {
  LingomatOpts opts{};
  lingomatOptsInitWithDefaults(&opts);
  opts.dataFile = LINGOMAT_TEST_DATA;
  LingomatHandle engine = nullptr;
  ASSERT_EQ(lingomatCreate(&engine, &opts), LINGOMAT_SUCCESS);

  const std::vector<Input> inputs = varied_inputs();
  std::vector<const char*> expected;
  for (const Input& input : inputs) expected.push_back(identify(engine, input));
  ASSERT_STREQ(expected[1], "C");  // C text named a.c: the answers mean something

  constexpr int kThreads = 8;
  constexpr int kRounds = 5;
  std::vector<int> mismatches(kThreads, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      // Each thread walks the inputs from its own starting point, so that different
      // inputs run at the same time.
      for (int round = 0; round < kRounds; ++round) {
        for (std::size_t i = 0; i < inputs.size(); ++i) {
          const std::size_t k = (i + static_cast<std::size_t>(t) * 7) % inputs.size();
          if (identify(engine, inputs[k]) != expected[k]) ++mismatches[t];
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(mismatches[t], 0) << "thread " << t;
  lingomatDestroy(&engine);
}

}  // namespace
