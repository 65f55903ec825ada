// Loading a data file with many languages: every language is found in the per-language
// objects, whatever their order, and duplicated names keep the first occurrence.
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "engine/engine.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::TempFile;

constexpr int kLanguages = 20'000;

std::string language(int i) { return "Lang" + std::to_string(i); }

// Language i has i+1 samples, 1000+i tokens in all, and token "t" seen i%97+1 times. The
// per-language objects list the languages in reverse order, so that a lookup by name has
// to search, and each repeats one language with different numbers after its first entry.
std::string many_languages_file() {
  std::string languages, language_tokens, tokens, filenames;
  for (int i = 0; i < kLanguages; ++i) {
    const std::string sep = i == 0 ? "" : ",";
    const int r = kLanguages - 1 - i;
    languages += sep + "\"" + language(i) + "\":" + std::to_string(i + 1);
    language_tokens += sep + "\"" + language(r) + "\":" + std::to_string(1000 + r);
    tokens += sep + "\"" + language(r) + "\":{\"t\":" + std::to_string(r % 97 + 1) + "}";
    filenames += sep + "\"" + language(i) + "\":[\"file" + std::to_string(i) + "\"]";
  }
  language_tokens += ",\"" + language(7) + "\":5";
  tokens += ",\"" + language(7) + "\":{\"t\":5}";
  return "{\"languages\":{" + languages + "},\"language_tokens\":{" + language_tokens +
         "},\"tokens\":{" + tokens + "},\"filenames\":{" + filenames +
         "},\"extnames\":{},\"interpreters\":{},\"tokens_total\":" +
         std::to_string(kLanguages * 1000) + ",\"languages_total\":" + std::to_string(kLanguages) +
         "}";
}

TEST(ManyLanguages, EveryLanguageIsLoadedWithItsOwnNumbers) {
  TempFile file(many_languages_file());
  Lingomat::Opts opts;
  opts.classifier.data_file = file.path();
  const Lingomat engine(opts);
  const Classifier& classifier = engine.classifier();
  EXPECT_EQ(classifier.languages().size(), static_cast<std::size_t>(kLanguages));
  for (int i : {0, 1, 7, 96, 97, 12'345, kLanguages - 1}) {
    const std::string name = language(i);
    ASSERT_NE(classifier.language_resident_c_str(name), nullptr) << name;
    EXPECT_EQ(classifier.tokens_probability({"t"}, name),
              std::log(static_cast<double>(i % 97 + 1) / static_cast<double>(1000 + i)))
        << name;
    EXPECT_EQ(classifier.language_probability(name),
              std::log(static_cast<double>(i + 1) / static_cast<double>(kLanguages)))
        << name;
    EXPECT_EQ(engine.identify_by_filename("file" + std::to_string(i)),
              std::vector<std::string>{name});
  }
}

}  // namespace
}  // namespace quillon::lingomat
