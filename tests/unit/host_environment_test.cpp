// A host's worker threads may have small stacks; identification must not need more.
#include <gtest/gtest.h>
#include <pthread.h>

#include "engine/engine.h"
#include "sample_texts.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

void* identify_all(void* argument) {
  auto* run = static_cast<std::pair<const Lingomat*, std::vector<std::string>>*>(argument);
  for (const std::string& text : run->second) run->first->identify("", text);
  return argument;
}

// A megabyte of each shape that once recursed or rescanned, every byte read, on a thread whose
// stack is as small as a host's worker thread may have: a crash here is a stack overflow.
TEST(HostEnvironment, HugeInputsNeedOnlyASmallStack) {
  const test_support::TempFile data(R"({"filenames": {}, "extnames": {}, "interpreters": {},
    "languages": {"C": 1}, "language_tokens": {"C": 2}, "tokens": {"C": {"int": 2}},
    "tokens_total": 2, "languages_total": 1})");
  Lingomat::Opts opts;
  opts.classifier.data_file = data.path();
  opts.tokenizer = {0, 0};
  const Lingomat engine(opts);
  std::pair<const Lingomat*, std::vector<std::string>> run{
      &engine,
      {std::string(1 << 20, '('), "/*" + std::string(1 << 20, '*'),
       "\"" + std::string(1 << 20, 'a'), test_support::repeat("{[(<", 1 << 18)}};
  for (const auto& [shape, text] : test_support::hostile_texts(1 << 20)) run.second.push_back(text);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  const std::size_t stack = 4u << 20;  // sanitizers enlarge every frame
#else
  const std::size_t stack = 256u << 10;
#endif
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, stack), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, identify_all, &run), 0);
  void* result = nullptr;
  pthread_join(thread, &result);
  EXPECT_EQ(result, &run);
  pthread_attr_destroy(&attributes);
}

}  // namespace
}  // namespace quillon::lingomat
