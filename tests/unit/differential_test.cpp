// The engine against the reference on small data files and random texts.
#include "differential.h"
#include "sample_texts.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

// The tokenizer on random texts under several limits. A prefix that holds all the tokenizer
// looked at must give the whole text's tokens: callers hand over such a prefix of long texts.
TEST(Differential, TokensAndInterpretersOfRandomTexts) {
  std::size_t prefixes_enough = 0;
  for (const Tokenizer::Opts limits : {Tokenizer::Opts{0, 0}, {16, 0}, {40, 5}, {}}) {
    const Tokenizer tokenizer(limits);
    for (const std::string& text : test_support::random_texts(500, 120, 20261123)) {
      const std::vector<std::string> whole = tokenizer.extract_tokens(text);
      ASSERT_EQ(whole, reference::extract_tokens(text, {limits.max_bytes, limits.max_tokens}))
          << "[" << text << "] limits " << limits.max_bytes << "/" << limits.max_tokens;
      ASSERT_EQ(tokenizer.extract_shebang(text), reference::extract_shebang(text)) << text;
      for (std::size_t cut = 0; cut <= text.size(); cut += 3) {
        TokenList prefix;
        const std::string_view head = std::string_view(text).substr(0, cut);
        if (tokenizer.extract_tokens_and_reach(head, prefix) > cut) continue;
        ++prefixes_enough;
        ASSERT_EQ(prefix.tokens, whole) << "[" << text << "] cut at " << cut;
      }
    }
  }
  EXPECT_GT(prefixes_enough, 1000u);  // the property was exercised
}

// Repeated languages, names and tokens, a language named with a NUL byte, zero and negative
// counts (every kind of non-finite score): odd data must score alike too.
const char* const kOddData = R"({
  "filenames": {"A": ["Afile"], "B": ["Afile"]},
  "extnames": {"A": [".a", ".x"], "B": [".x"], "C": [".x"], "Z": [".z"], "N\u0000L": [".n"]},
  "interpreters": {"A": ["ash"], "C": ["csh"]},
  "languages": {"A": 3, "B": 1, "C": 2, "A": 5, "D": 0, "E": -1, "P": 1, "N\u0000L": 2},
  "language_tokens": {"A": 9, "B": 4, "C": 6, "A": 1, "D": 0, "E": 7, "P": 0, "N\u0000L": 3},
  "tokens": {"A": {"a": 2, "b": 3, "a": 4, "(": 1, ";": 0}, "B": {"b": 1, "c": 3, "(": 2},
    "C": {"c": 2, "d": 3, "a": 1, ";": -2}, "D": {"a": 1}, "E": {"e": 7, "a": 0}, "P": {"b": 1},
    "N\u0000L": {"n": 3}},
  "tokens_total": 26, "languages_total": 11})";

TEST(Differential, OddDataFile) {
  test_support::TempFile file(kOddData);
  std::vector<EnginePair> pairs;
  pairs.push_back(make_pair(file.path(), 0, 0, 0, 0.0));
  pairs.push_back(make_pair(file.path(), 0, 0, 0, -3.0));
  pairs.push_back(make_pair(file.path(), 10, 4, 2, -8.0, {"C", "A", "Q"}));
  for (const EnginePair& pair : pairs) {
    for (const std::string text :
         {"", "a", "a b", "a a a ( ; ;", "e e a", "c d d ( q", "#!/bin/csh\na b", "zz yy n b"}) {
      for (const char* name : {"", "Afile", "afile", "d/Afile", "f.x", "F.X", "f.z", "f.a.x",
                               "f.x.b", ".x", "d.x/f", "f.", "f.n"})
        expect_same(pair, name, text);
      const auto tokens = reference::extract_tokens(text, {0, 0});
      const std::vector<std::string> languages{"A", "C", "A", "nope", "E", "D", "B", "P"};
      EXPECT_EQ(exactly(pair.engine->classifier().classify(tokens, languages)),
                exactly(pair.expected->classify(tokens, languages)))
          << text;
    }
  }
}

// Many languages, in reverse order in the per-language objects so that each lookup by name
// has to search, and one repeated there with other numbers after its first entry. So many
// that scoring keeps rows for only a few distinct known tokens and builds the others anew.
TEST(Differential, ManyLanguages) {
  std::string languages, totals, tokens;
  for (int i = 0, r = 4999; i < 5000; ++i, --r) {
    languages += "\"L" + std::to_string(i) + "\":" + std::to_string(i + 1) + ",";
    totals += "\"L" + std::to_string(r) + "\":" + std::to_string(1000 + r) + ",";
    tokens += "\"L" + std::to_string(r) + "\":{\"t\":" + std::to_string(r % 97 + 1) + ",\"u" +
              std::to_string(r % 40) + "\":1},";
  }
  test_support::TempFile file(
      R"({"filenames": {}, "extnames": {}, "interpreters": {}, "languages": {)" + languages +
      R"("L7": 9}, "language_tokens": {)" + totals + R"("L7": 5}, "tokens": {)" + tokens +
      R"("L7": {"t": 5}}, "tokens_total": 100000, "languages_total": 5000})");
  const EnginePair pair = make_pair(file.path(), 0, 0, 0, 0.0);
  std::string known;
  for (int i = 0; i < 80; ++i) known += "u" + std::to_string(i % 40) + " t ";
  for (const std::string& text : {std::string(), std::string("t x t"), known}) {
    expect_same(pair, "", text);
  }
}

}  // namespace
}  // namespace quillon::lingomat
