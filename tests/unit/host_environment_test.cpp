// What a host's environment must not change: the locale it set, the stack its thread has.
#include <gtest/gtest.h>
#include <pthread.h>

#include <clocale>
#include <locale>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "test_support.h"
#include "tokenize/tokenizer.h"

namespace quillon::lingomat {
namespace {

// Bytes whose class a locale could change: accented letters in UTF-8 and in Latin-1,
// digits, punctuation and a tag.
const std::string kMixedText =
    "caf\xc3\xa9 na\xefve \xe9t\xe9 \xc2\xb5s 3.14 x_y <p class=a> // c\n\"s\" \xff\xfe end";

std::vector<std::string> tokens_in_locale(const char* name) {
  const std::string previous = std::setlocale(LC_ALL, nullptr);
  const std::locale previous_global;
  if (std::setlocale(LC_ALL, name) == nullptr) return {"(locale missing)"};
  std::locale::global(std::locale(name));
  const Tokenizer tokenizer(Tokenizer::Opts{0, 0});
  std::vector<std::string> tokens = tokenizer.extract_tokens(kMixedText);
  std::locale::global(previous_global);
  std::setlocale(LC_ALL, previous.c_str());
  return tokens;
}

TEST(HostEnvironment, TokensDoNotDependOnTheLocale) {
  const std::vector<std::string> in_c = tokens_in_locale("C");
  const std::vector<std::string> in_utf8 = tokens_in_locale("C.UTF-8");
  if (in_utf8 == std::vector<std::string>{"(locale missing)"}) GTEST_SKIP() << "no C.UTF-8";
  EXPECT_FALSE(in_c.empty());
  EXPECT_EQ(in_c, in_utf8);
}

// Large inputs of the shapes that once recursed or scanned repeatedly, identified on a
// thread whose stack is as small as a host's worker thread may have.
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

TEST(HostEnvironment, HugeInputsNeedOnlyASmallStack) {
  const test_support::TempFile data(
      R"({"filenames": {}, "extnames": {}, "interpreters": {}, "languages": {"C": 1},
          "language_tokens": {"C": 2}, "tokens": {"C": {"int": 2}}, "tokens_total": 2,
          "languages_total": 1})");
  Lingomat::Opts opts;
  opts.classifier.data_file = data.path();
  opts.tokenizer = {0, 0};  // read every byte
  const Lingomat engine(opts);

  const std::size_t size = 1 << 20;
  SmallStackRun run{&engine, {}};
  run.texts.push_back(std::string(size, '('));
  run.texts.push_back("/*" + std::string(size, '*'));
  run.texts.push_back("\"" + std::string(size, 'a'));
  run.texts.push_back(std::string(size, '\n'));
  std::string tag = "<a";
  while (tag.size() < size) tag += " b";
  run.texts.push_back(tag + ">");
  std::string nested;
  while (nested.size() < size) nested += "{[(<";
  run.texts.push_back(nested);

  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  // Sanitizers enlarge every frame; the plain build is held to 256 KiB.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  const std::size_t stack = 4u << 20;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
  const std::size_t stack = 4u << 20;
#else
  const std::size_t stack = 256u << 10;
#endif
#else
  const std::size_t stack = 256u << 10;
#endif
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, stack), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, identify_all, &run), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(run.answered, run.texts.size());
}

}  // namespace
}  // namespace quillon::lingomat
