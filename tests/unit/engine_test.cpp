// The classifier's scores and the engine's decisions on small data files, worked out by hand.
#include "engine/engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "sample_texts.h"
#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::repeat;
using test_support::TempFile;
using Names = std::vector<std::string>;

// Make is known only by its file name; it has no statistics. C favours "int" and ";", Cpp
// "int" and "template", Python "def" and "self".
const char* const kData = R"json({
  "filenames": {"Make": ["Makefile"], "Ruby": ["Rakefile", "Makefile"]},
  "extnames": {"C": [".h", ".c"], "Cpp": [".h", ".cpp", ".cpp"], "Python": [".py"],
               "Ruby": [".rb"]},
  "interpreters": {"Python": ["python"], "Ruby": ["ruby"]},
  "languages": {"C": 10, "Cpp": 10, "Python": 10, "Ruby": 20},
  "language_tokens": {"C": 100, "Cpp": 100, "Python": 100, "Ruby": 100},
  "tokens": {"C": {"int": 40, ";": 40, "(": 10, ")": 10},
    "Cpp": {"int": 30, "template": 30, ";": 20, "(": 10, ")": 10},
    "Python": {"def": 40, "(": 20, ")": 20, "self": 20}, "Ruby": {"end": 50, "def": 30, "do": 20}},
  "tokens_total": 400, "languages_total": 50})json";

class EngineTest : public ::testing::Test {
 protected:
  Lingomat make(std::uint64_t min_tokens = 40, double floor = -8.0, Names restrictions = {}) {
    return Lingomat({{}, {file_.path(), min_tokens, 0, floor}, restrictions});
  }
  TempFile file_{kData};
};

TEST_F(EngineTest, ScoresWorkedOutByHand) {
  // "int x": C ln(40/100) + ln(1/400), Ruby ln(1/400) twice; priors ln(10/50) and ln(20/50).
  const Ranking ranking = make(0).classifier().classify({"int", "x"}, {"Ruby", "Nope", "C"});
  ASSERT_EQ(ranking.size(), 2u);
  EXPECT_DOUBLE_EQ(ranking[0].second, std::log(0.4) + std::log(1 / 400.0) + std::log(0.2));
  EXPECT_DOUBLE_EQ(ranking[1].second, 2 * std::log(1 / 400.0) + std::log(0.4));
  Classifier::Opts best_only = make().opts().classifier;
  best_only.max_results = 1;  // of three: Python ln 0.4 per token, Ruby ln 0.3, C unseen
  const Ranking best = Classifier(best_only).classify(Names(40, "def"), {"C", "Ruby", "Python"});
  EXPECT_EQ(best.size() == 1 ? best[0].first : "", "Python");
  EXPECT_TRUE(make().classifier().classify(Names(39, "def"), {"Python"}).empty());
}

TEST_F(EngineTest, Decisions) {
  const std::vector<std::array<std::string, 3>> rows = {
      {"x.h", repeat("int template ; ", 20), "Cpp"},  // the classifier decides
      {"x.h", repeat("int ; ", 30), "C"},
      {"Makefile", repeat("def end do ", 20), "Ruby"},
      {"x.h", "int;", "C"},  // too few tokens: the first candidate
      {"Makefile", "all:", "Make"},
      {"x.rb", "#!/usr/bin/python\nx", "Python"},         // interpreter before extension
      {"a.py", repeat("int template ; ", 20), "Python"},  // a single candidate
      {"", repeat("def self ( ) ", 15), "Python"},        // no candidate: every language
      {"unknown.txt", "   \n\t ", ""},
  };
  // Only the last dot starts the extension: the first would give another answer, or none.
  EXPECT_EQ(make().identify_by_extension("notes.c.py"), Names{"Python"});
  EXPECT_EQ(make().identify("main.py.c", "x"), "C");
  for (const auto& [name, text, answer] : rows) {
    EXPECT_EQ(make().identify(name, text), answer) << name << ": " << text;
    EXPECT_EQ(make().trace(name, text).answer, answer);  // the tools' view of one decision
  }
  EXPECT_EQ(make(40, -8.0, {"Ruby", "C"}).identify("a.py", "def"), "");  // never an excluded one
  // -0.0 switches the floor off too; with no tokens a negative score ÷ 0 is -inf.
  EXPECT_EQ(make(0, -0.0).identify_by_classifier(repeat("zz ", 50), {"C", "Nope"}).size(), 1u);
  EXPECT_TRUE(make(0, -8.0).identify_by_classifier("", {}).empty());
  EXPECT_EQ(make(0, 0.0).identify_by_classifier("", {}).size(), 4u);
}

// One language whose prior is ln 1 = 0 and whose one token scores ln 1/2: two of them score
// exactly ln 1/2 per token, and a floor of exactly that keeps the language.
TEST(ScoreFloor, AScoreExactlyOnTheFloorIsKept) {
  const TempFile file(R"({"filenames": {}, "extnames": {}, "interpreters": {},
    "languages": {"A": 1}, "language_tokens": {"A": 2}, "tokens": {"A": {"t": 1}},
    "tokens_total": 2, "languages_total": 1})");
  Lingomat::Opts opts{{}, {file.path(), 0, 0, std::log(0.5)}, {}};
  EXPECT_EQ(Lingomat(opts).identify("", "t t"), "A");
  opts.classifier.min_score_per_token = std::nextafter(std::log(0.5), 0.0);
  EXPECT_EQ(Lingomat(opts).identify("", "t t"), "");
}

}  // namespace
}  // namespace quillon::lingomat
