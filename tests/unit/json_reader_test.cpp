#include "json/json_reader.h"

#include <random>

#include <gtest/gtest.h>
#include <rapidjson/error/en.h>

#include "test_support.h"

namespace quillon::lingomat {
namespace {

using test_support::TempFile;

std::string parse_error(const std::string& content) {
  TempFile file(content);
  try {
    parse_json_file(file.path());
  } catch (const JsonException& e) {
    return e.what();
  }
  return "no error";
}

TEST(ParseJsonFile, MissingFileIsAStreamFailureNotAJsonError) {
  EXPECT_THROW(parse_json_file("/nonexistent/lingomat/data.json"), std::ios_base::failure);
}

TEST(ParseJsonFile, ReportsTheParserMessageWithoutOffset) {
  EXPECT_EQ(parse_error(""), "The document is empty.");
  EXPECT_EQ(parse_error(" \t\r\n"), "The document is empty.");
  EXPECT_EQ(parse_error("{} {}"), "The document root must not be followed by other values.");
  EXPECT_EQ(parse_error("{\"a\": 1,}"), "Missing a name for object member.");
  EXPECT_EQ(parse_error("{\"a\": NaN}"), "Invalid value.");
}

TEST(ParseJsonFile, StopsAtTheFirstNulByte) {
  TempFile file(std::string("{\"a\": 1}\0garbage", 16));
  const JsonDocument document = parse_json_file(file.path());
  EXPECT_EQ(json_get<int>(document, "a"), 1);
}

TEST(ParseJsonFile, DeepNestingIsParsedOrRejectedWithoutExhaustingTheStack) {
  const std::size_t depth = 1000;  // the deepest accepted, far beyond the stack-safe depth
  // The same message as for a shallow document cut short.
  EXPECT_EQ(parse_error("[[["), "Invalid value.");
  EXPECT_EQ(parse_error(std::string(depth, '[')), "Invalid value.");
  EXPECT_EQ(parse_error(std::string(depth, '[') + "1 2"),
            "Missing a comma or ']' after an array element.");
  TempFile nested(std::string(depth, '[') + std::string(depth, ']'));
  const JsonDocument document = parse_json_file(nested.path());
  EXPECT_TRUE(document.IsArray());
  // One level more is refused before parsing, whatever follows: the parser's memory per
  // level would otherwise let a file of brackets cost many times its size.
  for (const std::size_t deeper : {depth + 1, std::size_t{2'000'000}}) {
    EXPECT_EQ(parse_error(std::string(deeper, '[') + std::string(deeper, ']')),
              "nested deeper than 1000 levels");
  }
  // Brackets inside strings do not count as nesting.
  EXPECT_EQ(parse_error("{\"a\": \"" + std::string(5000, '[') + "\\\"\"} x"),
            "The document root must not be followed by other values.");
}

std::string default_parser_verdict(const std::string& text) {
  JsonDocument document;
  document.Parse(text.c_str());
  return document.HasParseError() ? rapidjson::GetParseError_En(document.GetParseError())
                                  : "no error";
}

TEST(ParseJsonFile, DeepDocumentsGetTheDefaultParsersMessages) {
  const std::string deep(40, '[');
  for (const char* start : {"]", "}", ",", ":", " \r\n\t]"}) {
    EXPECT_EQ(parse_error(start + deep), "Invalid value.") << start;
  }
  // Mutations of documents just deeper than the shallow limit, where the default parser
  // is still safe to run: whatever the mutation, both must agree.
  std::mt19937 random(11);
  const std::string pieces[] = {"[", "]", "{",    "}",  ",",  ":",   "\"k\"", "1",  "-",
                                "x", " ", "null", "\"", "\\", "tru", "1e",    "[]", "{}"};
  for (int round = 0; round < 500; ++round) {
    const std::size_t depth = 33 + random() % 8;
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) text += random() % 2 ? "[" : "{\"k\":";
    for (int i = static_cast<int>(random() % 6); i > 0; --i) {
      const std::string& piece = pieces[random() % std::size(pieces)];
      text.insert(random() % (text.size() + 1), piece);
    }
    if (random() % 3 == 0) text.resize(random() % (text.size() + 1));
    TempFile file(text);
    std::string verdict = "no error";
    try {
      parse_json_file(file.path());
    } catch (const JsonException& e) {
      verdict = e.what();
    }
    EXPECT_EQ(verdict, default_parser_verdict(text)) << text;
  }
}

TEST(ParseJsonFile, AcceptsSurroundingWhitespace) {
  TempFile file("\r\n\t {\"a\": 2} \n");
  EXPECT_EQ(json_get<int>(parse_json_file(file.path()), "a"), 2);
}

std::string get_error(const char* json) {
  JsonDocument document;
  document.Parse(json);
  try {
    json_get<int>(document, "n");
  } catch (const JsonException& e) {
    return e.what();
  }
  return "no error";
}

TEST(JsonGet, NamesEachKindOfProblem) {
  EXPECT_EQ(get_error("[1]"), "Expected JSON value to be an object");
  EXPECT_EQ(get_error("{\"m\": 1}"), "JSON object missing expected key");
  EXPECT_EQ(get_error("{\"n\": \"1\"}"), "JSON value was of an unexpected type");
  EXPECT_EQ(get_error("{\"n\": 3.0}"), "JSON value was of an unexpected type");
  EXPECT_EQ(get_error("{\"n\": 1e3}"), "JSON value was of an unexpected type");
  EXPECT_EQ(get_error("{\"n\": 2147483648}"), "JSON value was of an unexpected type");
  EXPECT_EQ(get_error("{\"n\": 2147483647}"), "no error");
  EXPECT_EQ(get_error("{\"n\": -2147483648}"), "no error");
}

TEST(JsonGet, FirstOfDuplicateMembersWins) {
  JsonDocument document;
  document.Parse("{\"n\": 1, \"n\": 2, \"o\": {\"x\": 1}}");
  EXPECT_EQ(json_get<int>(document, "n"), 1);
  EXPECT_TRUE(json_get<JsonConstObject>(document, "o").HasMember("x"));
  EXPECT_THROW(json_get<JsonConstObject>(document, "n"), JsonException);
}

TEST(JsonString, KeepsEmbeddedNulAndRejectsOtherTypes) {
  JsonDocument document;
  document.Parse("[\"a\\u0000b\", 5]");
  EXPECT_EQ(json_string(document[0]), std::string("a\0b", 3));
  try {
    json_string(document[1]);
    FAIL() << "a number is not a string";
  } catch (const JsonException& e) {
    EXPECT_STREQ(e.what(), "Expected JSON value to be a string");
  }
}

}  // namespace
}  // namespace quillon::lingomat
