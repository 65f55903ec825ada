#include "json/json_member_index.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace quillon::lingomat {
namespace {

JsonDocument parsed(const std::string& json) {
  JsonDocument document;
  document.Parse(json.data(), json.size());
  EXPECT_FALSE(document.HasParseError()) << json;
  return document;
}

TEST(JsonMemberIndex, FirstOfEqualNamesWinsAndNamesCompareByteForByte) {
  const JsonDocument document =
      parsed(R"({"C": 1, "c": 2, "C": 3, "": 4, "a\u0000b": 5, "a": 6, "C ": 7})");
  const JsonMemberIndex index(document.GetObject());
  EXPECT_EQ(index.at("C").GetInt(), 1);
  EXPECT_EQ(index.at("c").GetInt(), 2);
  EXPECT_EQ(index.at("").GetInt(), 4);
  EXPECT_EQ(index.at(std::string_view("a\0b", 3)).GetInt(), 5);
  EXPECT_EQ(index.at("a").GetInt(), 6);
  EXPECT_EQ(index.at("C ").GetInt(), 7);
  EXPECT_EQ(index.find("b"), nullptr);
  EXPECT_EQ(index.find(std::string_view("a\0", 2)), nullptr);
  try {
    index.at("missing");
    FAIL() << "a missing member was found";
  } catch (const JsonException& e) {
    EXPECT_STREQ(e.what(), "JSON object missing expected key");
  }
}

TEST(JsonMemberIndex, AnEmptyObjectFindsNothing) {
  const JsonDocument document = parsed("{}");
  const JsonMemberIndex index(document.GetObject());
  EXPECT_EQ(index.find(""), nullptr);
}

// Against the walk in document order that it replaces, on many short, colliding names.
TEST(JsonMemberIndex, AgreesWithALinearWalkOnRandomObjects) {
  std::mt19937 random(14);
  for (int round = 0; round < 20; ++round) {
    std::string json = "{";
    const int members = 1 + static_cast<int>(random() % 3000);
    for (int i = 0; i < members; ++i) {
      if (i > 0) json += ",";
      json += "\"L" + std::to_string(random() % 1000) + "\":" + std::to_string(i);
    }
    json += "}";
    const JsonDocument document = parsed(json);
    const JsonMemberIndex index(document.GetObject());
    for (int name = 0; name < 1100; ++name) {
      const std::string key = "L" + std::to_string(name);
      const auto walked = document.FindMember(key.c_str());
      const JsonValue* found = index.find(key);
      if (walked == document.MemberEnd()) {
        EXPECT_EQ(found, nullptr) << key;
      } else {
        EXPECT_EQ(found, &walked->value) << key;
      }
    }
  }
}

}  // namespace
}  // namespace quillon::lingomat
