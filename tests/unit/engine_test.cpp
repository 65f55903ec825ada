#include "engine/engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "json/json_exception.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::TempFile;
using Names = std::vector<std::string>;

// Make is known only by its file name; it has no statistics.
const char* const kLookups = R"json(
  "filenames": {"Make": ["Makefile"], "Ruby": ["Rakefile", "Makefile"]},
  "extnames": {"C": [".h", ".c"], "Cpp": [".h", ".cpp", ".cpp"], "Python": [".py"],
               "Ruby": [".rb"]},
  "interpreters": {"Python": ["python"], "Ruby": ["ruby"]},)json";

// Python favours "def" and ":"; C favours "int" and ";"; Cpp favours "int" and "template".
const char* const kStatistics = R"json(
  "languages": {"C": 10, "Cpp": 10, "Python": 10, "Ruby": 10},
  "language_tokens": {"C": 100, "Cpp": 100, "Python": 100, "Ruby": 100},
  "tokens": {
    "C": {"int": 40, ";": 40, "(": 10, ")": 10},
    "Cpp": {"int": 30, "template": 30, ";": 20, "(": 10, ")": 10},
    "Python": {"def": 40, "(": 20, ")": 20, "self": 20},
    "Ruby": {"end": 50, "def": 30, "do": 20}},
  "tokens_total": 400,
  "languages_total": 40)json";

std::string data_file_text() { return std::string("{") + kLookups + kStatistics + "}"; }

class EngineTest : public ::testing::Test {
 protected:
  Lingomat make(Lingomat::Opts opts = {}) {
    opts.classifier.data_file = file_.path();
    return Lingomat(opts);
  }

  static std::string repeat(const std::string& text, int n) {
    std::string result;
    for (int i = 0; i < n; ++i) result += text;
    return result;
  }

  TempFile file_{data_file_text()};
};

TEST_F(EngineTest, NameStrategiesReadTheirLookupExactly) {
  const Lingomat engine = make();
  EXPECT_EQ(engine.identify_by_filename("Makefile"), (Names{"Make", "Ruby"}));
  EXPECT_EQ(engine.identify_by_filename("src/Makefile"), Names{});
  EXPECT_EQ(engine.identify_by_filename("makefile"), Names{});
  EXPECT_EQ(engine.identify_by_extension("x.h"), (Names{"C", "Cpp"}));
  EXPECT_EQ(engine.identify_by_extension("x.cpp"), (Names{"Cpp", "Cpp"}));
  EXPECT_EQ(engine.identify_by_extension("script.py"), Names{"Python"});
  EXPECT_EQ(engine.identify_by_extension("SCRIPT.PY"), Names{});
  EXPECT_EQ(engine.identify_by_extension("script"), Names{});
  EXPECT_EQ(engine.identify_by_extension("script.py.bak"), Names{});
  EXPECT_EQ(engine.identify_by_extension("notes.txt.py"), Names{"Python"});  // the last dot
  EXPECT_EQ(engine.identify_by_extension("build.d/Makefile"), Names{});
  EXPECT_EQ(engine.identify_by_extension(""), Names{});
  EXPECT_EQ(engine.identify_by_shebang("#!/usr/bin/env python3\n"), Names{"Python"});
  EXPECT_EQ(engine.identify_by_shebang("#!/bin/zsh\n"), Names{});
  EXPECT_EQ(engine.identify_by_shebang("print()"), Names{});
}

TEST_F(EngineTest, ClassifierDecidesBetweenSeveralCandidates) {
  const Lingomat engine = make();
  const std::string cpp = repeat("int template ; ", 20);
  EXPECT_EQ(engine.identify("x.h", cpp), "Cpp");
  EXPECT_EQ(engine.identify("x.h", repeat("int ; ", 30)), "C");
  // A file name and an extension that disagree are settled by the text.
  EXPECT_EQ(engine.identify("Makefile", repeat("def end do ", 20)), "Ruby");
}

TEST_F(EngineTest, FallsBackToTheFirstCandidateWhenTheClassifierIsSilent) {
  const Lingomat engine = make();
  EXPECT_EQ(engine.identify("x.h", "int;"), "C");
  EXPECT_EQ(engine.identify("Makefile", "all:"), "Make");
  // Interpreter beats extension at the fall-back.
  EXPECT_EQ(engine.identify("x.rb", "#!/usr/bin/python\nx"), "Python");
}

TEST_F(EngineTest, SingleCandidateIsAlwaysTheAnswer) {
  const Lingomat engine = make();
  EXPECT_EQ(engine.identify("a.py", repeat("int template ; ", 20)), "Python");
  // Known only to the lookups, it still wins as the only candidate.
  Lingomat::Opts opts;
  opts.restrictions = {"Make"};
  EXPECT_EQ(make(opts).identify("Makefile", repeat("int ; ", 30)), "Make");
}

TEST_F(EngineTest, NoCandidatesRanksEveryLanguage) {
  const Lingomat engine = make();
  EXPECT_EQ(engine.identify("", repeat("def self ( ) ", 15)), "Python");
  EXPECT_EQ(engine.identify("", ""), "");
  EXPECT_EQ(engine.identify("unknown.txt", "   \n\t "), "");
}

TEST_F(EngineTest, RestrictionsNarrowCandidatesAndRankings) {
  Lingomat::Opts opts;
  opts.restrictions = {"Ruby", "C"};
  const Lingomat engine = make(opts);
  EXPECT_TRUE(engine.apply_restrictions());
  EXPECT_EQ(engine.default_restrictions(), (Names{"C", "Ruby"}));
  // Python is excluded: the classifier ranks only C and Ruby.
  EXPECT_EQ(engine.identify("a.py", repeat("def self ", 20)), "Ruby");
  // Excluded and too short to classify: no answer rather than an excluded language.
  EXPECT_EQ(engine.identify("a.py", "def"), "");
}

TEST_F(EngineTest, UnrestrictedDefaultsToEveryLanguageWithStatistics) {
  const Lingomat engine = make();
  EXPECT_FALSE(engine.apply_restrictions());
  EXPECT_EQ(engine.default_restrictions(), (Names{"C", "Cpp", "Python", "Ruby"}));
}

TEST_F(EngineTest, ScoreFloorPerToken) {
  Lingomat::Opts opts;
  opts.classifier.min_tokens = 0;
  // 50 tokens unseen everywhere: -ln(400) ≈ -5.99 per token plus the prior.
  const std::string unseen = repeat("zz ", 50);
  opts.classifier.min_score_per_token = -5.0;
  EXPECT_TRUE(make(opts).identify_by_classifier(unseen, {}).empty());
  opts.classifier.min_score_per_token = -7.0;
  EXPECT_EQ(make(opts).identify_by_classifier(unseen, {}).size(), 4u);
  opts.classifier.min_score_per_token = -0.0;
  EXPECT_EQ(make(opts).identify_by_classifier(unseen, {"C", "Nope"}).size(), 1u);
}

// A score exactly on the floor is kept; the next double above it is not reached.
TEST_F(EngineTest, AScoreExactlyOnTheFloorIsKept) {
  Lingomat::Opts opts;
  opts.classifier.min_tokens = 0;
  const std::string text = repeat("int x ; ", 20);
  const Lingomat::Trace trace = make(opts).trace("", text);
  ASSERT_FALSE(trace.ranking.empty());
  const double best = trace.ranking.front().second / static_cast<double>(trace.token_count);
  opts.classifier.min_score_per_token = best;
  const Ranking kept = make(opts).identify_by_classifier(text, {});
  ASSERT_FALSE(kept.empty());
  EXPECT_EQ(kept.front().first, trace.ranking.front().first);
  opts.classifier.min_score_per_token = std::nextafter(best, 0.0);
  const Ranking above = make(opts).identify_by_classifier(text, {});
  EXPECT_TRUE(std::none_of(above.begin(), above.end(), [&](const auto& entry) {
    return entry.first == trace.ranking.front().first;
  }));
}

TEST_F(EngineTest, EmptyTextWithoutMinimumKeepsOnlyZeroScores) {
  Lingomat::Opts opts;
  opts.classifier.min_tokens = 0;
  // No tokens: score ÷ 0 is -inf for a negative prior, so a non-zero floor drops it.
  EXPECT_TRUE(make(opts).identify_by_classifier("", {}).empty());
  opts.classifier.min_score_per_token = 0.0;
  EXPECT_EQ(make(opts).identify_by_classifier("", {}).size(), 4u);
}

std::string construction_error(const std::string& json) {
  TempFile file(json);
  Lingomat::Opts opts;
  opts.classifier.data_file = file.path();
  try {
    Lingomat engine(opts);
  } catch (const JsonException& e) {
    return e.what();
  }
  return "no error";
}

TEST(EngineConstruction, RejectsMalformedLookups) {
  const std::string stats = kStatistics;
  EXPECT_EQ(construction_error(R"json({"filenames": {}, "interpreters": {},)json" + stats + "}"),
            "JSON object missing expected key");
  EXPECT_EQ(construction_error(R"json({"filenames": [], "extnames": {}, "interpreters": {},)json" +
                               stats + "}"),
            "JSON value was of an unexpected type");
  EXPECT_EQ(construction_error(
                R"json({"filenames": {"C": ".c"}, "extnames": {}, "interpreters": {},)json" +
                stats + "}"),
            "JSON value was of an unexpected type");
  EXPECT_EQ(construction_error(R"json({"filenames": {}, "extnames": {"C": [".c", 1]},
                                   "interpreters": {},)json" +
                               stats + "}"),
            "Expected JSON value to be a string");
  EXPECT_EQ(construction_error(R"json({"filenames": {}, "extnames": {}, "interpreters": {},)json" +
                               stats + "}"),
            "no error");
}

TEST(EngineConstruction, MissingFileIsAStreamFailure) {
  Lingomat::Opts opts;
  opts.classifier.data_file = "/nonexistent/lingomat.json";
  EXPECT_THROW(Lingomat{opts}, std::ios_base::failure);
}

}  // namespace
}  // namespace quillon::lingomat

namespace quillon::lingomat {
namespace {

// Arbitrary bytes, lengths and names must never crash identification or escape as errors.
TEST_F(EngineTest, ArbitraryInputIsAlwaysAnswered) {
  Lingomat::Opts opts;
  opts.classifier.min_tokens = 1;
  opts.tokenizer.max_bytes = 0;
  opts.tokenizer.max_tokens = 0;
  const Lingomat engine = make(opts);
  const std::string interesting =
      "#!/\\\"'<>=-+*%&|.@_;{}()[]0x1e \t\r\n\x80\xFF" + std::string(1, '\0');
  std::mt19937 random(7);
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    const int length = static_cast<int>(random() % 300);
    for (int i = 0; i < length; ++i) {
      text += random() % 2 ? interesting[random() % interesting.size()]
                           : static_cast<char>(random() % 256);
    }
    const std::string name = round % 3 == 0 ? text.substr(0, 12) : "f.h";
    const std::string answer = engine.identify(name, text);
    EXPECT_TRUE(answer.empty() || answer == "C" || answer == "Cpp" || answer == "Python" ||
                answer == "Ruby" || answer == "Make")
        << answer;
  }
}

TEST_F(EngineTest, TraceRecordsEachStepOfTheDecision) {
  Lingomat::Opts opts;
  opts.restrictions = {"Cpp", "Python", "Ruby"};
  const Lingomat engine = make(opts);
  const std::string code = "#!/usr/bin/ruby\n" + repeat("int template ; ", 20);
  const Lingomat::Trace trace = engine.trace("lib/Makefile.h", code);
  EXPECT_EQ(trace.by_filename, Names{});  // the lookup takes the name exactly
  EXPECT_EQ(trace.interpreter, "ruby");
  EXPECT_EQ(trace.by_interpreter, Names{"Ruby"});
  EXPECT_EQ(trace.extension, ".h");
  EXPECT_EQ(trace.by_extension, (Names{"C", "Cpp"}));
  EXPECT_EQ(trace.candidates, (Names{"Ruby", "Cpp"}));  // C is not allowed
  EXPECT_EQ(trace.token_count, 61u);                    // the #! line is one token
  ASSERT_EQ(trace.ranking.size(), 2u);
  EXPECT_EQ(trace.ranking[0].first, "Cpp");
  EXPECT_EQ(trace.kept, trace.ranking);  // the default floor keeps both here
  EXPECT_EQ(trace.answer, "Cpp");
  EXPECT_EQ(trace.reason, Lingomat::Trace::Reason::kClassifier);
}

TEST_F(EngineTest, TraceKeepsTheRankingTheFloorRemoved) {
  Lingomat::Opts opts;
  opts.classifier.min_tokens = 0;
  opts.classifier.min_score_per_token = -5.0;
  const Lingomat engine = make(opts);
  const Lingomat::Trace trace = engine.trace("x.h", repeat("zz ", 50));
  EXPECT_EQ(trace.token_count, 50u);
  EXPECT_EQ(trace.ranking.size(), 2u);
  EXPECT_TRUE(trace.kept.empty());
  EXPECT_EQ(trace.answer, "C");
  EXPECT_EQ(trace.reason, Lingomat::Trace::Reason::kFirstCandidate);
}

TEST_F(EngineTest, TraceOfASingleCandidateStillShowsTheClassifier) {
  const Lingomat engine = make();
  const Lingomat::Trace trace = engine.trace("a.py", repeat("int ; ", 30));
  EXPECT_EQ(trace.answer, "Python");
  EXPECT_EQ(trace.reason, Lingomat::Trace::Reason::kOnlyCandidate);
  ASSERT_EQ(trace.ranking.size(), 1u);
  EXPECT_EQ(trace.ranking[0].first, "Python");

  const Lingomat::Trace none = engine.trace("", "");
  EXPECT_EQ(none.answer, "");
  EXPECT_EQ(none.reason, Lingomat::Trace::Reason::kNone);
  EXPECT_TRUE(none.candidates.empty() && none.ranking.empty());
}

// identify() and trace() share one pipeline; on arbitrary names and texts, under options that
// exercise every branch, their answers never differ.
TEST_F(EngineTest, TraceAnswersExactlyAsIdentify) {
  std::vector<Lingomat::Opts> variants(4);
  variants[1].classifier.min_tokens = 0;
  variants[2].restrictions = {"C", "Ruby"};
  variants[3].classifier.min_tokens = 5;
  variants[3].classifier.min_score_per_token = -3.0;
  const std::vector<std::string> names{"", "x.h", "x.cpp", "Makefile", "a.py", "b.rb", "q.txt"};
  const std::vector<std::string> pieces{
      "int ", "; ",  "template ", "def ", "self ",
      "end ", "do ", "( ",        "zz ",  "#!/usr/bin/env python\n"};
  std::mt19937 random(11);
  for (Lingomat::Opts& opts : variants) {
    const Lingomat engine = make(opts);
    for (int round = 0; round < 300; ++round) {
      std::string text;
      const int count = static_cast<int>(random() % 60);
      for (int i = 0; i < count; ++i) text += pieces[random() % pieces.size()];
      const std::string& name = names[random() % names.size()];
      const Lingomat::Trace trace = engine.trace(name, text);
      ASSERT_EQ(trace.answer, engine.identify(name, text)) << name << ": " << text;
      // The recorded lookups are the strategies' own.
      ASSERT_EQ(trace.by_filename, engine.identify_by_filename(name));
      ASSERT_EQ(trace.by_interpreter, engine.identify_by_shebang(text));
      ASSERT_EQ(trace.by_extension, engine.identify_by_extension(name));
      ASSERT_EQ(trace.kept, engine.identify_by_classifier(text, trace.candidates));
    }
  }
}

}  // namespace
}  // namespace quillon::lingomat
