// The classifier's scores and the engine's decisions on small data files, computed by hand.
#include "engine/engine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "sample_texts.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::repeat;
using test_support::TempFile;
using Names = std::vector<std::string>;

// A: 2 samples, tokens x×3 y×1; B: 1 sample, tokens y×2. Six tokens, three samples in all.
const char* const kTwoLanguages = R"({"filenames": {}, "extnames": {}, "interpreters": {},
  "languages": {"A": 2, "B": 1}, "language_tokens": {"A": 4, "B": 2},
  "tokens": {"A": {"x": 3, "y": 1}, "B": {"y": 2}}, "tokens_total": 6, "languages_total": 3})";

Classifier load(const std::string& json, std::uint64_t min_tokens = 0,
                std::uint64_t max_results = 0) {
  const TempFile file(json);
  return Classifier(Classifier::Opts{file.path(), min_tokens, max_results});
}

TEST(Classifier, ScoresAndRanking) {
  const Classifier classifier = load(kTwoLanguages);
  // A: 3/4 · 1/4 · 1/6 (z unseen) · 2/3 = 1/48.  B: 1/6 (x unseen) · 2/2 · 1/6 · 1/3 = 1/108.
  const Ranking ranking = classifier.classify({"x", "y", "z"}, {"B", "C", "A"});
  ASSERT_EQ(ranking.size(), 2u);
  EXPECT_EQ(ranking[0].first, "A");
  EXPECT_NEAR(ranking[0].second, std::log(1.0 / 48.0), 1e-12);
  EXPECT_EQ(ranking[1].first, "B");
  EXPECT_NEAR(ranking[1].second, std::log(1.0 / 108.0), 1e-12);
  EXPECT_THROW(classifier.language_probability("C"), std::out_of_range);
  const Ranking best = load(kTwoLanguages, 0, 1).classify({"y"}, {"A", "B", "B"});
  ASSERT_EQ(best.size(), 1u);
  EXPECT_EQ(best[0].first, "B");
}

// Make is known only by its file name; it has no statistics. Python favours "def" and ":";
// C favours "int" and ";"; Cpp favours "int" and "template".
const char* const kData = R"json({
  "filenames": {"Make": ["Makefile"], "Ruby": ["Rakefile", "Makefile"]},
  "extnames": {"C": [".h", ".c"], "Cpp": [".h", ".cpp", ".cpp"], "Python": [".py"],
               "Ruby": [".rb"]},
  "interpreters": {"Python": ["python"], "Ruby": ["ruby"]},
  "languages": {"C": 10, "Cpp": 10, "Python": 10, "Ruby": 10},
  "language_tokens": {"C": 100, "Cpp": 100, "Python": 100, "Ruby": 100},
  "tokens": {
    "C": {"int": 40, ";": 40, "(": 10, ")": 10},
    "Cpp": {"int": 30, "template": 30, ";": 20, "(": 10, ")": 10},
    "Python": {"def": 40, "(": 20, ")": 20, "self": 20},
    "Ruby": {"end": 50, "def": 30, "do": 20}},
  "tokens_total": 400, "languages_total": 40})json";

class EngineTest : public ::testing::Test {
 protected:
  Lingomat make(std::uint64_t min_tokens = 40, double floor = -8.0, Names restrictions = {}) {
    Lingomat::Opts opts;
    opts.classifier.data_file = file_.path();
    opts.classifier.min_tokens = min_tokens;
    opts.classifier.min_score_per_token = floor;
    opts.restrictions = restrictions;
    return Lingomat(opts);
  }
  TempFile file_{kData};
};

TEST_F(EngineTest, NameStrategiesReadTheirLookupExactly) {
  const Lingomat engine = make();
  EXPECT_EQ(engine.identify_by_filename("Makefile"), (Names{"Make", "Ruby"}));
  EXPECT_EQ(engine.identify_by_filename("src/Makefile"), Names{});
  EXPECT_EQ(engine.identify_by_filename("makefile"), Names{});
  EXPECT_EQ(engine.identify_by_extension("x.h"), (Names{"C", "Cpp"}));
  EXPECT_EQ(engine.identify_by_extension("x.cpp"), (Names{"Cpp", "Cpp"}));
  EXPECT_EQ(engine.identify_by_extension("SCRIPT.PY"), Names{});
  EXPECT_EQ(engine.identify_by_extension("script"), Names{});
  EXPECT_EQ(engine.identify_by_extension("script.py.bak"), Names{});
  EXPECT_EQ(engine.identify_by_extension("build.d/Makefile"), Names{});
  EXPECT_EQ(engine.identify_by_extension(""), Names{});
  EXPECT_EQ(engine.identify_by_shebang("#!/usr/bin/env python3\n"), Names{"Python"});
  EXPECT_EQ(engine.identify_by_shebang("#!/bin/zsh\n"), Names{});
  EXPECT_EQ(engine.identify_by_shebang("print()"), Names{});
}

// Only the last dot starts the extension: the first would give another answer, or none.
TEST_F(EngineTest, TheExtensionStartsAtTheLastDot) {
  const Lingomat engine = make();
  EXPECT_EQ(engine.identify_by_extension("notes.c.py"), Names{"Python"});
  EXPECT_EQ(engine.identify("main.py.c", "x"), "C");
  EXPECT_EQ(engine.trace("main.py.c", "x").extension, ".c");
}

TEST_F(EngineTest, Decisions) {
  struct Row {
    const char* name;
    std::string text;
    std::string answer;
  };
  const std::vector<Row> rows = {
      {"x.h", repeat("int template ; ", 20), "Cpp"},  // the classifier decides
      {"x.h", repeat("int ; ", 30), "C"},
      {"Makefile", repeat("def end do ", 20), "Ruby"},
      {"x.h", "int;", "C"},  // too few tokens: the first candidate
      {"Makefile", "all:", "Make"},
      {"x.rb", "#!/usr/bin/python\nx", "Python"},         // interpreter before extension
      {"a.py", repeat("int template ; ", 20), "Python"},  // a single candidate
      {"", repeat("def self ( ) ", 15), "Python"},        // no candidate: every language
      {"", "", ""},
      {"unknown.txt", "   \n\t ", ""},
  };
  const Lingomat engine = make();
  for (const Row& row : rows)
    EXPECT_EQ(engine.identify(row.name, row.text), row.answer) << row.text;

  const Lingomat restricted = make(40, -8.0, {"Ruby", "C"});
  EXPECT_EQ(restricted.default_restrictions(), (Names{"C", "Ruby"}));
  EXPECT_EQ(make().default_restrictions(), (Names{"C", "Cpp", "Python", "Ruby"}));
  EXPECT_EQ(restricted.identify("a.py", repeat("def self ", 20)), "Ruby");  // only C and Ruby
  EXPECT_EQ(restricted.identify("a.py", "def"), "");  // never an excluded language
  // Known only to the lookups, it still wins as the only candidate.
  EXPECT_EQ(make(40, -8.0, {"Make"}).identify("Makefile", repeat("int ; ", 30)), "Make");
}

TEST_F(EngineTest, ScoreFloorPerToken) {
  // 50 tokens unseen everywhere: -ln(400) ≈ -5.99 per token plus the prior.
  const std::string unseen = repeat("zz ", 50);
  EXPECT_TRUE(make(0, -5.0).identify_by_classifier(unseen, {}).empty());
  EXPECT_EQ(make(0, -7.0).identify_by_classifier(unseen, {}).size(), 4u);
  EXPECT_EQ(make(0, -0.0).identify_by_classifier(unseen, {"C", "Nope"}).size(), 1u);
  // No tokens: a negative score ÷ 0 is -inf and is dropped; 0.0 switches the floor off.
  EXPECT_TRUE(make(0, -8.0).identify_by_classifier("", {}).empty());
  EXPECT_EQ(make(0, 0.0).identify_by_classifier("", {}).size(), 4u);
}

// One language whose prior is ln 1 = 0 and whose one token scores ln 1/2: two of them score
// exactly ln 1/2 per token, and a floor of exactly that keeps the language.
TEST(ScoreFloor, AScoreExactlyOnTheFloorIsKept) {
  const TempFile file(R"({"filenames": {}, "extnames": {}, "interpreters": {},
    "languages": {"A": 1}, "language_tokens": {"A": 2}, "tokens": {"A": {"t": 1}},
    "tokens_total": 2, "languages_total": 1})");
  Lingomat::Opts opts;
  opts.classifier.data_file = file.path();
  opts.classifier.min_tokens = 0;
  opts.classifier.min_score_per_token = std::log(0.5);
  EXPECT_EQ(Lingomat(opts).identify("", "t t"), "A");
  opts.classifier.min_score_per_token = std::nextafter(std::log(0.5), 0.0);
  EXPECT_EQ(Lingomat(opts).identify("", "t t"), "");
}

TEST_F(EngineTest, TraceRecordsEachStep) {
  const Lingomat engine = make(40, -8.0, {"Cpp", "Python", "Ruby"});
  const Lingomat::Trace trace =
      engine.trace("lib/Makefile.h", "#!/usr/bin/ruby\n" + repeat("int template ; ", 20));
  EXPECT_EQ(trace.interpreter, "ruby");
  EXPECT_EQ(trace.candidates, (Names{"Ruby", "Cpp"}));  // C is not allowed
  EXPECT_EQ(trace.token_count, 61u);                    // the #! line is one token
  EXPECT_EQ(trace.kept, trace.ranking);
  EXPECT_EQ(trace.reason, Lingomat::Trace::Reason::kClassifier);
  EXPECT_EQ(make(0, -5.0).trace("x.h", repeat("zz ", 50)).reason,
            Lingomat::Trace::Reason::kFirstCandidate);
  EXPECT_EQ(make().trace("a.py", "x").reason, Lingomat::Trace::Reason::kOnlyCandidate);
  EXPECT_EQ(make().trace("", "").reason, Lingomat::Trace::Reason::kNone);
}

// identify() and trace() share one pipeline: on random names and texts, under options that
// reach every branch, they agree, and the trace records the strategies' own results.
TEST_F(EngineTest, TraceAnswersExactlyAsIdentify) {
  const Names names{"", "x.h", "x.cpp", "Makefile", "a.py", "b.rb", "q.txt"};
  const Names pieces{"int ", "; ",  "template ", "def ", "self ",
                     "end ", "do ", "( ",        "zz ",  "#!/usr/bin/env python\n"};
  std::mt19937 random(11);
  for (const Lingomat& engine : {make(), make(0), make(40, -8.0, {"C", "Ruby"}), make(5, -3.0)}) {
    for (int round = 0; round < 200; ++round) {
      std::string text;
      for (int i = static_cast<int>(random() % 60); i > 0; --i) {
        text += pieces[random() % pieces.size()];
      }
      const std::string& name = names[random() % names.size()];
      const Lingomat::Trace trace = engine.trace(name, text);
      ASSERT_EQ(trace.answer, engine.identify(name, text)) << name << ": " << text;
      ASSERT_EQ(trace.by_filename, engine.identify_by_filename(name));
      ASSERT_EQ(trace.by_interpreter, engine.identify_by_shebang(text));
      ASSERT_EQ(trace.by_extension, engine.identify_by_extension(name));
      ASSERT_EQ(trace.kept, engine.identify_by_classifier(text, trace.candidates));
    }
  }
}

}  // namespace
}  // namespace quillon::lingomat
