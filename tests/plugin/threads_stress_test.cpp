// Many threads share one engine through the C interface and must get exactly the answers
// one thread gets. Built under ThreadSanitizer, this is the data-race check of identification.
// And a host's worker thread may have a small stack: identification must not need more.
#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <thread>
#include <vector>

#include "lingomat.h"
#include "sample_texts.h"

namespace {

const char* identify(LingomatHandle engine, const std::pair<std::string, const char*>& input) {
  const char* language = nullptr;
  return lingomatIdentifyCode(engine, input.first.data(), input.first.size(), input.second,
                              &language) == LINGOMAT_SUCCESS
             ? language
             : "(failed)";
}

LingomatHandle shipped_engine(bool every_byte) {
  LingomatOpts opts{};
  lingomatOptsInitWithDefaults(&opts);
  opts.dataFile = LINGOMAT_TEST_DATA;
  if (every_byte) opts.maxScanBytes = opts.maxTokens = 0;
  LingomatHandle engine = nullptr;
  EXPECT_EQ(lingomatCreate(&engine, &opts), LINGOMAT_SUCCESS);
  return engine;
}

TEST(ThreadsStress, ManyThreadsOnOneEngineGetTheSingleThreadedAnswers) {
  LingomatHandle engine = shipped_engine(false);
  std::vector<std::pair<std::string, const char*>> inputs;
  for (const char* name : {static_cast<const char*>(nullptr), "a.c", "a.py", "b.h"}) {
    for (const char* text : {"int main(void) { printf(\"hi\\n\"); }\n", "def f(self):\n  pass\n",
                             "#!/bin/sh\necho \"$f\"\n", "<html><a href=\"y\">z</a></html>\n"}) {
      inputs.emplace_back(quillon::lingomat::test_support::repeat(text, 12), name);
    }
  }
  for (const auto& [shape, text] : quillon::lingomat::test_support::hostile_texts(4096)) {
    inputs.emplace_back(text, shape.size() % 2 == 0 ? nullptr : "r.txt");
  }
  std::vector<const char*> expected;
  for (const auto& input : inputs) expected.push_back(identify(engine, input));
  ASSERT_STREQ(expected[4], "C");  // C text named a.c: the answers mean something

  constexpr std::size_t kThreads = 8;
  std::vector<int> mismatches(kThreads, 0);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      // Each thread starts at its own input, so that different inputs run at the same time.
      for (std::size_t i = 0; i < 5 * inputs.size(); ++i) {
        const std::size_t k = (i + t * 7) % inputs.size();
        if (identify(engine, inputs[k]) != expected[k]) ++mismatches[t];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mismatches, std::vector<int>(kThreads, 0));
  lingomatDestroy(&engine);
}

void* identify_all(void* engine) {
  namespace samples = quillon::lingomat::test_support;
  std::vector<samples::NamedText> texts = samples::hostile_texts(1 << 20);
  texts.push_back({"parentheses", std::string(1 << 20, '(')});
  texts.push_back({"nested brackets", samples::repeat("{[(<", 1 << 18)});
  for (const auto& [shape, text] : texts) identify(static_cast<LingomatHandle>(engine), {text, ""});
  return engine;
}

// A megabyte of each shape that once recursed or rescanned, every byte read, on a thread with
// a small stack: a crash here is a stack overflow.
TEST(ThreadsStress, HugeInputsNeedOnlyASmallStack) {
  LingomatHandle engine = shipped_engine(true);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  const std::size_t stack = 4u << 20;  // sanitizers enlarge every frame
#else
  const std::size_t stack = 256u << 10;
#endif
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, stack), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, identify_all, engine), 0);
  void* result = nullptr;
  pthread_join(thread, &result);
  EXPECT_EQ(result, engine);
  pthread_attr_destroy(&attributes);
  lingomatDestroy(&engine);
}

}  // namespace
