// What a host's environment must not change: the locale it set, the stack its thread has.
#include <gtest/gtest.h>
#include <pthread.h>

#include <clocale>
#include <locale>

#include "engine/engine.h"
#include "sample_texts.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

std::vector<std::string> tokens_in_locale(const char* name) {
  // Bytes whose class a locale could change: accented letters in UTF-8 and in Latin-1.
  const std::string text = "caf\xc3\xa9 na\xefve \xe9t\xe9 \xc2\xb5s 3.14 x_y <p class=a> \xff end";
  const std::string previous = std::setlocale(LC_ALL, nullptr);
  const std::locale previous_global;
  if (std::setlocale(LC_ALL, name) == nullptr) return {};
  std::locale::global(std::locale(name));
  std::vector<std::string> tokens = Tokenizer(Tokenizer::Opts{0, 0}).extract_tokens(text);
  std::locale::global(previous_global);
  std::setlocale(LC_ALL, previous.c_str());
  return tokens;
}

TEST(HostEnvironment, TokensDoNotDependOnTheLocale) {
  const std::vector<std::string> in_utf8 = tokens_in_locale("C.UTF-8");
  if (in_utf8.empty()) GTEST_SKIP() << "no C.UTF-8 locale";
  EXPECT_EQ(tokens_in_locale("C"), in_utf8);
}

struct SmallStackRun {
  const Lingomat* engine;
  std::vector<std::string> texts;
  std::size_t answered = 0;
};

void* identify_all(void* argument) {
  auto* run = static_cast<SmallStackRun*>(argument);
  for (const std::string& text : run->texts) {
    run->engine->identify("", text);
    ++run->answered;
  }
  return nullptr;
}

// A megabyte of each shape that once recursed or rescanned, every byte read, on a thread whose
// stack is as small as a host's worker thread may have.
TEST(HostEnvironment, HugeInputsNeedOnlyASmallStack) {
  const test_support::TempFile data(R"({"filenames": {}, "extnames": {}, "interpreters": {},
    "languages": {"C": 1}, "language_tokens": {"C": 2}, "tokens": {"C": {"int": 2}},
    "tokens_total": 2, "languages_total": 1})");
  Lingomat::Opts opts;
  opts.classifier.data_file = data.path();
  opts.tokenizer = {0, 0};
  const Lingomat engine(opts);
  SmallStackRun run{&engine,
                    {std::string(1 << 20, '('), "/*" + std::string(1 << 20, '*'),
                     "\"" + std::string(1 << 20, 'a'), test_support::repeat("{[(<", 1 << 18)}};
  for (const auto& [shape, text] : test_support::hostile_texts(1 << 20)) run.texts.push_back(text);
    // Sanitizers enlarge every frame; the plain build is held to 256 KiB.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  const std::size_t stack = 4u << 20;
#else
  const std::size_t stack = 256u << 10;
#endif
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, stack), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, identify_all, &run), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(run.answered, run.texts.size());
}

}  // namespace
}  // namespace quillon::lingomat
