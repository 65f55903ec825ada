#include "train/data_file_writer.h"

#include <cmath>

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <gtest/gtest.h>

#include "common/tool_error.h"
#include "engine/engine.h"
#include "test_support.h"

namespace quillon::lingomat::tools {
namespace {

rapidjson::Document parse_strict(const std::string& json) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseValidateEncodingFlag>(json.c_str(), json.size());
  EXPECT_FALSE(document.HasParseError()) << rapidjson::GetParseError_En(document.GetParseError());
  return document;
}

struct Example {
  std::vector<LanguageDefinition> languages;
  std::vector<LanguageStatistics> statistics;

  Example() {
    languages.push_back({"C", 1, {".c", ".h"}, {}, {"tcc"}});
    languages.push_back({"Markdown", 4, {".md"}, {"README.md"}, {}});  // no samples
    languages.push_back({"C++", 6, {".cpp", ".h"}, {}, {}});
    statistics.resize(3);
    add_sample({"int", "main", "(", ")", "int"}, statistics[0]);
    add_sample({"caf\xC3\xA9", std::string("nul\0byte", 8)}, statistics[0]);
    add_sample({"template", "<", "int", ">"}, statistics[2]);
  }
};

TEST(DataFileWriterTest, WritesEveryKeyWithTotalsThatAddUp) {
  const Example example;
  const auto document = parse_strict(render_data_file(example.languages, example.statistics));
  ASSERT_TRUE(document.IsObject());
  std::vector<std::string> keys;
  for (const auto& member : document.GetObject()) keys.push_back(member.name.GetString());
  EXPECT_EQ(keys, (std::vector<std::string>{"filenames", "extnames", "interpreters", "languages",
                                            "language_tokens", "tokens", "tokens_total",
                                            "languages_total", "calibration"}));
  EXPECT_EQ(document["calibration"]["count_scale"].GetInt(), 1);
  EXPECT_EQ(document["calibration"]["tokens_total"].GetInt(), 11);
  EXPECT_EQ(document["calibration"]["counted_tokens"].GetInt(), 11);
  EXPECT_EQ(document["languages"]["C"].GetInt(), 2);
  EXPECT_EQ(document["languages"]["C++"].GetInt(), 1);
  EXPECT_EQ(document["language_tokens"]["C"].GetInt(), 7);
  EXPECT_EQ(document["tokens"]["C"]["int"].GetInt(), 2);
  EXPECT_EQ(document["tokens"]["C"]["caf\xC3\xA9"].GetInt(), 1);
  const auto& nul = document["tokens"]["C"].FindMember(rapidjson::Value("nul\0byte", 8));
  ASSERT_NE(nul, document["tokens"]["C"].MemberEnd());
  EXPECT_EQ(document["tokens_total"].GetInt(), 11);
  EXPECT_EQ(document["languages_total"].GetInt(), 3);

  for (const char* language : {"C", "C++"}) {
    int sum = 0;
    for (const auto& token : document["tokens"][language].GetObject()) sum += token.value.GetInt();
    EXPECT_EQ(sum, document["language_tokens"][language].GetInt());
  }
}

TEST(DataFileWriterTest, LanguagesWithoutSamplesGetOnlyTheirNames) {
  const Example example;
  const auto document = parse_strict(render_data_file(example.languages, example.statistics));
  EXPECT_TRUE(document["extnames"].HasMember("Markdown"));
  EXPECT_TRUE(document["filenames"].HasMember("Markdown"));
  EXPECT_FALSE(document["filenames"].HasMember("C"));  // nothing listed, nothing written
  for (const char* key : {"languages", "language_tokens", "tokens"}) {
    EXPECT_FALSE(document[key].HasMember("Markdown")) << key;
  }
  // Definitions order is kept: it decides the fallback among languages sharing ".h".
  std::vector<std::string> order;
  for (const auto& member : document["extnames"].GetObject())
    order.push_back(member.name.GetString());
  EXPECT_EQ(order, (std::vector<std::string>{"C", "Markdown", "C++"}));
}

TEST(DataFileWriterTest, TheEngineLoadsTheFile) {
  const Example example;
  test_support::TempDir dir;
  test_support::write_text(dir / "data.json",
                           render_data_file(example.languages, example.statistics));
  Lingomat::Opts opts;
  opts.classifier.data_file = dir / "data.json";
  const Lingomat engine(opts);
  EXPECT_EQ(engine.classifier().languages(), (std::vector<std::string>{"C", "C++"}));
  EXPECT_EQ(engine.identify_by_extension("x.h"), (std::vector<std::string>{"C", "C++"}));
  EXPECT_EQ(engine.identify("notes.md", "x"), "Markdown");
  EXPECT_EQ(engine.identify_by_filename("README.md"), (std::vector<std::string>{"Markdown"}));
}

// Loads `json` into an engine and scores `tokens` for C.
double score_for_c(const std::string& json, const std::vector<std::string>& tokens) {
  test_support::TempDir dir;
  test_support::write_text(dir / "data.json", json);
  Classifier::Opts opts;
  opts.data_file = dir / "data.json";
  opts.min_tokens = 0;
  const Classifier classifier(opts);
  return classifier.classify(tokens, {"C"}).at(0).second;
}

TEST(DataFileWriterTest, CountScaleRaisesEveryScorePerTokenByItsLogarithm) {
  const Example example;
  const std::vector<std::string> tokens = {"int", "main", "never-seen", "(", "int"};
  const double plain =
      score_for_c(render_data_file(example.languages, example.statistics, {1, 300}), tokens);
  const std::string scaled_json = render_data_file(example.languages, example.statistics, {3, 300});
  const double scaled = score_for_c(scaled_json, tokens);
  EXPECT_NEAR(scaled - plain, double(tokens.size()) * std::log(3.0), 1e-9);

  const auto document = parse_strict(scaled_json);
  EXPECT_EQ(document["tokens"]["C"]["int"].GetInt(), 6);
  EXPECT_EQ(document["language_tokens"]["C"].GetInt(), 7);  // the divisor stays
  EXPECT_EQ(document["tokens_total"].GetInt(), 100);
  EXPECT_EQ(document["calibration"]["count_scale"].GetInt(), 3);
  EXPECT_EQ(document["calibration"]["tokens_total"].GetInt(), 300);
  EXPECT_EQ(document["calibration"]["counted_tokens"].GetInt(), 11);
}

TEST(DataFileWriterTest, TokensTotalSetsOnlyTheCostOfUnseenTokens) {
  const Example example;
  const auto score = [&](std::uint64_t total, const std::vector<std::string>& tokens) {
    return score_for_c(render_data_file(example.languages, example.statistics, {1, total}), tokens);
  };
  EXPECT_DOUBLE_EQ(score(100, {"int", "main"}), score(1000, {"int", "main"}));
  EXPECT_NEAR(score(100, {"int", "unseen"}) - score(1000, {"int", "unseen"}), std::log(10.0), 1e-9);
}

TEST(DataFileWriterTest, ABadCalibrationFailsClearly) {
  const Example example;
  EXPECT_THROW(render_data_file(example.languages, example.statistics, {0, 0}), ToolError);
  Example big;
  big.statistics[0].counts["int"] = 1ULL << 30;
  big.statistics[0].tokens = 1ULL << 30;
  EXPECT_NO_THROW(render_data_file(big.languages, big.statistics, {1, 0}));
  try {
    render_data_file(big.languages, big.statistics, {4, 0});
    ADD_FAILURE() << "no error";
  } catch (const ToolError& error) {
    EXPECT_NE(std::string(error.what()).find("times the count scale"), std::string::npos)
        << error.what();
  }
}

TEST(DataFileWriterTest, CountsBeyondThirtyTwoBitsFailClearly) {
  Example example;
  example.statistics[0].tokens = 2147483647ULL - example.statistics[2].tokens;
  EXPECT_NO_THROW(render_data_file(example.languages, example.statistics));

  ++example.statistics[0].tokens;  // the per-language count still fits, the total does not
  try {
    render_data_file(example.languages, example.statistics);
    ADD_FAILURE() << "no error";
  } catch (const ToolError& error) {
    EXPECT_NE(std::string(error.what()).find("tokens_total is 2147483648"), std::string::npos)
        << error.what();
  }
  example.statistics[0].tokens = 7;
  example.statistics[2].counts["<"] = 1ULL << 32;
  try {
    render_data_file(example.languages, example.statistics);
    ADD_FAILURE() << "no error";
  } catch (const ToolError& error) {
    EXPECT_NE(std::string(error.what()).find("a token count of C++ is 4294967296"),
              std::string::npos)
        << error.what();
  }
}

}  // namespace
}  // namespace quillon::lingomat::tools
