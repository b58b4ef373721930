#include "verbs/ReadJson.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "support/ErrorOf.h"

namespace host {
namespace {

std::string nested(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

TEST(ReadJson, ReadsJson) {
  EXPECT_EQ(readJson(R"({"b":1,"a":"x"})").dump(), R"({"b":1,"a":"x"})");
  EXPECT_EQ(readJson("5"), Json(5));
}

TEST(ReadJson, DiscardsOtherText) {
  for (const char* const text : {"", "{", "get time", "{\"a\":\"\xff\"}", "{}{", "]"})
    EXPECT_TRUE(readJson(text).is_discarded()) << text;
}

TEST(ReadJson, RefusesANul) {
  EXPECT_TRUE(readJson(std::string_view("{}\0", 3)).is_discarded());
  EXPECT_TRUE(readJson(std::string_view("{}\0{", 4)).is_discarded());
}

TEST(ReadJson, DiscardsDeepNesting) {
  EXPECT_FALSE(readJson(nested(kDeepestJson)).is_discarded());
  EXPECT_TRUE(readJson(nested(kDeepestJson + 1)).is_discarded());
  EXPECT_TRUE(readJson(std::string(1 << 20, '[')).is_discarded());
  EXPECT_TRUE(readJson(R"({"a":)" + nested(kDeepestJson) + "}").is_discarded());
}

TEST(ReadJson, CountsOnlyOpenBrackets) {
  std::string row = "[]";
  for (std::size_t i = 0; i < 2 * kDeepestJson; ++i) row += ",[]";
  EXPECT_EQ(readJson('[' + row + ']').size(), 2 * kDeepestJson + 1);
}

std::string refusal(const std::string& request) {
  return errorOf([&] { static_cast<void>(readRequest(request)); });
}

std::string withMembers(std::size_t count) {
  std::string members;
  for (std::size_t i = 0; i < count; ++i) members += ",\"" + std::to_string(i) + "\":0";
  return "{" + members.substr(1) + "}";
}

TEST(ReadRequest, ReadsAnObject) {
  const std::string text = R"({"verb":"set","more":[1,{"verb":true}],"value":""})";
  EXPECT_EQ(readRequest(text).dump(), text);
  EXPECT_EQ(readRequest("{}"), Json::object());
}

TEST(ReadRequest, RefusesWhatIsNotAnObject) {
  for (const char* const text : {"", "5", "[]", "{", "{}{", "]", "{\"a\":\"\xff\"}"})
    EXPECT_EQ(refusal(text), "the request is not a JSON object") << text;
  EXPECT_EQ(refusal(R"({"a":)" + nested(kDeepestJson) + "}"),
            "the request is nested more than 32 deep");
}

TEST(ReadRequest, RefusesANul) {
  for (const char* const text : {"{}|{", "{|}", "{\"a\":\"|\"}", "|"}) {
    std::string request = text;
    std::replace(request.begin(), request.end(), '|', '\0');
    EXPECT_EQ(refusal(request), "the request holds a NUL byte") << text;
  }
}

TEST(ReadRequest, RefusesADuplicateMember) {
  const char* const refused = "the request holds \"key\" twice; name each member once";
  EXPECT_EQ(refusal(R"({"key":1,"value":2,"key":1})"), refused);
  EXPECT_EQ(refusal(R"({"a":[{"key":1,"key":2}]})"), refused);
  EXPECT_EQ(refusal(R"({"k\u0065y":1,"key":2})"), refused);
  EXPECT_EQ(refusal(R"({"key":{"other":1},"key":2})"), refused);
  EXPECT_EQ(refusal(R"({"key":{"key":[{"key":1},{"key":2}]}})"), "");
  EXPECT_EQ(refusal(R"({"other":{"key":1},"key":2})"), "");
}

// The cut text is not JSON as a whole: nothing after the limit is read.
TEST(ReadRequest, StopsAtTheLimit) {
  const std::string refused = "the request holds more than 64 members and values";
  constexpr std::size_t kMost = (kMostInRequest - 1) / 2;
  EXPECT_EQ(readRequest(withMembers(kMost)).size(), kMost);
  EXPECT_EQ(refusal(withMembers(kMost + 1)), refused);
  EXPECT_EQ(refusal(withMembers(80'000).substr(0, 500)), refused);
  EXPECT_EQ(refusal("{\"a\":[1" + std::string(100, ',')), "the request is not a JSON object");
  EXPECT_EQ(refusal("{\"a\":[" + std::string(kMostInRequest, '[')),
            "the request is nested more than 32 deep");
}

}  // namespace
}  // namespace host
