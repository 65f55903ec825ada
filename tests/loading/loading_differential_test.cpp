// Loading reads the data file in one pass of parse events; the reference engine reads a whole
// parsed document. For every data file, valid or not, both must give the same verdict (status
// and reason) and, when they build an engine, the same answers.
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "engine/engine.h"
#include "reference_engine.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

// Sections in the order the trainer writes them, with repeats of every kind and escapes.
const char* const kWrittenOrder = R"({
"filenames": {"A": ["Afile", "Bfile"], "B": ["Afile"]},
"extnames": {"A": [".a", ".x"], "B": [".x"], "C": [".c"]},
"interpreters": {"A": ["ash"], "C": ["csh", "ash"]},
"languages": {"A": 3, "B": 1, "C": 2, "A": 5},
"language_tokens": {"A": 9, "B": 4, "C": 6, "A": 1},
"tokens": {"A": {"a": 2, "b": 3, "a": 4, "(": 1}, "B": {"b": 1, "c": 3, "\"": 2},
 "C": {"c": 2, "a": 1, "\\\/": 1, "\u00e9\u4e2d\t": 3}, "B": {"z": 9}},
"tokens_total": 20, "languages_total": 8, "calibration": {"x": [1.5, true, {"y": null}]}
})";

// The same kinds of content with the sections in another order, counts before languages.
const char* const kOtherOrder = R"({"tokens_total": 7, "tokens": {"Q": {"q": 1, "r": 2},
"P": {"p": 3, "q": 1}, "Z": {"z": 1}}, "language_tokens": {"P": 4, "Q": 3},
"interpreters": {"Q": ["qsh"]}, "languages": {"Q": 1, "P": 2}, "extnames": {"P": [".p"]},
"filenames": {}, "languages_total": 3, "tokens": 5})";

struct Verdict {
  int status = LINGOMAT_SUCCESS;
  std::string reason;
};

std::string shown(const std::string& content) { return "data file: " + content; }

// What the reference engine makes of the file: a JSON fault or none. A file it cannot read
// is never one of these variants.
Verdict reference_verdict(const reference::EngineOpts& opts,
                          std::unique_ptr<reference::Engine>& engine) {
  Verdict verdict;
  try {
    engine = std::make_unique<reference::Engine>(opts);
  } catch (const std::runtime_error& error) {
    verdict.status = LINGOMAT_ERROR_JSON;
    verdict.reason = error.what();
  }
  return verdict;
}

// Texts and names that reach every lookup and the classifier.
const std::vector<std::pair<std::string, std::string>>& probes() {
  static const std::vector<std::pair<std::string, std::string>> kProbes = {
      {"Afile", "a b c"},
      {"x.x", "a a ( b"},
      {"y.c", "c c c z"},
      {"", "#!/bin/ash\nb c"},
      {"", "#!/usr/bin/csh\n"},
      {"q.p", "q r q p"},
      {"", "#!/bin/qsh\nq q"},
      {"", "a b ( c q p r"},
      {"none", ""},
      {"", "\" \\/ \u00e9\u4e2d\t \" c"},
  };
  return kProbes;
}

bool same_bits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

void expect_same_rankings(const Ranking& ranking, const reference::Ranking& want,
                          const std::string& content) {
  ASSERT_EQ(ranking.size(), want.size()) << shown(content);
  for (std::size_t i = 0; i < ranking.size(); ++i) {
    EXPECT_EQ(ranking[i].first, want[i].first) << shown(content);
    EXPECT_TRUE(same_bits(ranking[i].second, want[i].second)) << shown(content);
  }
}

void expect_same_engines(const Lingomat& engine, const reference::Engine& expected,
                         const std::string& content) {
  const std::vector<std::string> languages = engine.classifier().languages();
  EXPECT_EQ(languages, expected.languages()) << shown(content);
  // Every token the engine read, and those the files hold with escapes, scored one by one:
  // a token read wrongly is unseen on one side.
  std::vector<std::string> tokens = {"\"", "\\/", "\u00e9\u4e2d\t", "a", "q", "unseen"};
  const Vocabulary& vocabulary = engine.classifier().vocabulary();
  for (std::uint32_t id = 0; id < vocabulary.size(); ++id) {
    tokens.emplace_back(vocabulary.token(id));
  }
  for (const std::string& token : tokens) {
    expect_same_rankings(engine.classifier().classify({token}, languages),
                         expected.classify({token}, languages), content);
  }
  for (const auto& [name, text] : probes()) {
    EXPECT_EQ(engine.identify(name, text), expected.identify(name, text))
        << shown(content) << "\nfile " << name << ", text " << text;
    expect_same_rankings(engine.identify_by_classifier(text, {}),
                         expected.identify_by_classifier(text, {}), content);
  }
}

// Writes `content` to the one scratch file and compares both loaders on it.
void expect_same_loading(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
  Lingomat::Opts opts;
  opts.classifier.data_file = path;
  opts.classifier.min_tokens = 0;
  opts.classifier.min_score_per_token = 0.0;
  reference::EngineOpts reference_opts;
  reference_opts.data_file = path;
  reference_opts.min_tokens = 0;
  reference_opts.min_score_per_token = 0.0;

  const EngineCreation created = create_engine(opts);
  std::unique_ptr<reference::Engine> expected;
  const Verdict verdict = reference_verdict(reference_opts, expected);
  ASSERT_EQ(created.status, verdict.status) << shown(content) << "\n" << created.reason;
  ASSERT_EQ(created.reason, verdict.reason) << shown(content);
  if (created.engine != nullptr) expect_same_engines(*created.engine, *expected, content);
}

// Every byte deleted, doubled, and replaced by three of the bytes that JSON cares about, in
// turn, so that each replacement meets every kind of place.
std::vector<std::string> mutations(const std::string& base) {
  static const char kReplacements[] = {'{', '}', '[', ']', '"', ',',  ':',  '0',
                                       '-', '.', 'e', 'x', ' ', '\\', '\0', '\xff'};
  std::vector<std::string> variants;
  for (std::size_t i = 0; i < base.size(); ++i) {
    variants.push_back(std::string(base).erase(i, 1));
    variants.push_back(std::string(base).insert(i, 1, base[i]));
    for (std::size_t k = 0; k < 3; ++k) {
      const char replacement = kReplacements[(i + k * 5) % sizeof kReplacements];
      if (replacement == base[i]) continue;
      std::string replaced = base;
      replaced[i] = replacement;
      variants.push_back(std::move(replaced));
    }
  }
  return variants;
}

// Every number and string replaced by values of other types and
// ranges, which single bytes seldom make while keeping the file valid JSON.
std::vector<std::string> value_swaps(const std::string& base) {
  static const char* const kValues[] = {"1.5", "[]",         "{}",      "\"s\"",     "null",
                                        "-1",  "2147483648", "[\"v\"]", "{\"k\": 1}"};
  std::vector<std::string> variants;
  for (std::size_t i = 0; i < base.size();) {
    std::size_t end = i;
    if (base[i] == '"') {
      for (end = i + 1; base[end] != '"'; ++end) end += base[end] == '\\';
      ++end;
    } else {
      while (end < base.size() &&
             (std::isdigit(static_cast<unsigned char>(base[end])) != 0 || base[end] == '-')) {
        ++end;
      }
    }
    if (end == i) {
      ++i;
      continue;
    }
    for (const char* value : kValues) {
      variants.push_back(std::string(base).replace(i, end - i, value));
    }
    i = end;
  }
  return variants;
}

class LoadingDifferential : public ::testing::Test {
 protected:
  test_support::TempFile file_{""};
};

TEST_F(LoadingDifferential, TheUnchangedFilesLoadAlike) {
  for (const char* base : {kWrittenOrder, kOtherOrder}) {
    expect_same_loading(file_.path(), base);
    std::unique_ptr<reference::Engine> expected;
    reference::EngineOpts opts;
    opts.data_file = file_.path();
    EXPECT_EQ(reference_verdict(opts, expected).status, LINGOMAT_SUCCESS) << base;
  }
}

TEST_F(LoadingDifferential, EverySingleByteMutationGetsTheSameVerdictAndAnswers) {
  for (const char* base : {kWrittenOrder, kOtherOrder}) {
    for (const std::string& variant : mutations(base)) {
      expect_same_loading(file_.path(), variant);
      if (HasFatalFailure()) return;
    }
  }
}

TEST_F(LoadingDifferential, EveryValueSwappedForAnotherTypeGetsTheSameVerdictAndAnswers) {
  for (const char* base : {kWrittenOrder, kOtherOrder}) {
    for (const std::string& variant : value_swaps(base)) {
      expect_same_loading(file_.path(), variant);
      if (HasFatalFailure()) return;
    }
  }
}

// Shapes that single-byte changes rarely make: faults of several kinds in one file (the
// earliest check must win, not the earliest byte), wrong types everywhere, numbers at the
// edges of the 32-bit range, nesting on both sides of the parser's limits.
TEST_F(LoadingDifferential, ChosenShapesGetTheSameVerdictAndAnswers) {
  const std::string lookups = R"("filenames": {}, "extnames": {}, "interpreters": {})";
  const std::string totals = R"("tokens_total": 3, "languages_total": 2)";
  auto file = [&](const std::string& statistics, const std::string& rest) {
    return "{" + statistics + ", " + rest + "}";
  };
  const std::string good = R"("languages": {"A": 1}, "language_tokens": {"A": 2},
                              "tokens": {"A": {"a": 2}})";
  auto nested = [](int levels) {
    return std::string(static_cast<std::size_t>(levels), '[') +
           std::string(static_cast<std::size_t>(levels), ']');
  };
  const std::vector<std::string> shapes = {
      "",
      " \n",
      "[]",
      "3",
      "\"text\"",
      "null",
      "{}",
      "{} {}",
      std::string("{}\0garbage", 10),
      file(good, lookups + ", " + totals),
      file(good, lookups + ", " + totals) + std::string("\0 trailing", 10),
      file(good, lookups),
      file(good, totals),
      file(good, lookups + R"(, "tokens_total": 3.0, "languages_total": 2)"),
      file(good, lookups + R"(, "tokens_total": 2147483648, "languages_total": 2)"),
      file(good, lookups + R"(, "tokens_total": -2147483648, "languages_total": -1)"),
      file(good, lookups + R"(, "tokens_total": 1e3, "languages_total": 18446744073709551616)"),
      file(good, lookups + R"(, "tokens_total": "3", "languages_total": [2])"),
      file(good, R"("filenames": [], "extnames": {}, "interpreters": {}, )" + totals),
      file(good,
           R"("filenames": {"A": "x"}, "extnames": {"B": [1]}, "interpreters": {}, )" + totals),
      file(good,
           R"("filenames": {"A": ["f", 2, {}]}, "extnames": 1, "interpreters": {}, )" + totals),
      file(good,
           R"("filenames": {"A": [["f"]], "B": {}}, "extnames": {}, "interpreters": 0, )" + totals),
      file(R"("languages": {"A": 1, "B": 2.5}, "language_tokens": {"A": "2"},
              "tokens": {"A": {"a": 2}})",
           lookups + ", " + totals),
      file(R"("languages": {"A": 1, "B": 2}, "language_tokens": {"A": 2, "B": 1},
              "tokens": {"A": {"a": [2]}, "B": 4})",
           lookups + ", " + totals),
      file(R"("languages": {"A": 1}, "language_tokens": {"A": 2, "A": "x"},
              "tokens": {"A": {"a": 2}, "A": 3, "C": {"c": "bad"}})",
           lookups + ", " + totals),
      file(R"("languages": {"A": 1, "A": 2}, "language_tokens": {"A": 2},
              "tokens": {"A": {"a": 2, "a": "late"}})",
           lookups + ", " + totals),
      file(R"("languages": 1, "language_tokens": {}, "tokens": {})", lookups + ", " + totals),
      file(R"("languages": {}, "language_tokens": {}, "tokens": {})", lookups + ", " + totals),
      file(R"("languages": {}, "language_tokens": {}, "tokens": {}, "languages": 7)",
           lookups + ", " + totals + R"(, "tokens": 1, "filenames": 3)"),
      file(good, lookups + ", " + totals + ", \"deep\": " + nested(32)),
      file(good, lookups + ", " + totals + ", \"deep\": " + nested(33)),
      file(good, lookups + ", " + totals + ", \"deep\": " + nested(999)),
      // Past 1000 levels the library refuses what the reference would read: that limit is
      // checked with the other refusals in tests/unit.
      file(good, lookups + ", \"deep\": " + nested(40) + ", " + totals + ", \"x\": [1,]"),
      file(good, lookups + ", \"x\": [1,], \"deep\": " + nested(2000)),
      // The reference looks names up as NUL-terminated strings, so only tokens hold a NUL here.
      file(R"("languages": {"\u00e9": 1}, "language_tokens": {"\u00e9": 2},
              "tokens": {"\u00e9": {"a\u0000": 2, "\ud83d\ude00": 1}})",
           lookups + ", " + totals),
  };
  for (const std::string& shape : shapes) expect_same_loading(file_.path(), shape);
}

}  // namespace
}  // namespace quillon::lingomat
