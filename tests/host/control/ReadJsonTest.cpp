#include "control/ReadJson.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace host {
namespace {

std::string nested(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

TEST(ReadJson, ReadsWhatIsJson) {
  EXPECT_EQ(readJson(R"({"b":1,"a":"x"})").dump(), R"({"b":1,"a":"x"})");
  EXPECT_EQ(readJson("5"), Json(5));
}

TEST(ReadJson, DiscardsWhatIsNot) {
  for (const char* const text : {"", "{", "get time", "{\"a\":\"\xff\"}", "{}{", "]"})
    EXPECT_TRUE(readJson(text).is_discarded()) << text;
}

TEST(ReadJson, DiscardsWhatIsDeeperThanAnyRequest) {
  EXPECT_FALSE(readJson(nested(kDeepestJson)).is_discarded());
  EXPECT_TRUE(readJson(nested(kDeepestJson + 1)).is_discarded());
  EXPECT_TRUE(readJson(std::string(1 << 20, '[')).is_discarded());
  EXPECT_TRUE(readJson(R"({"a":)" + nested(kDeepestJson) + "}").is_discarded());
}

TEST(ReadJson, CountsNoBracketsInTexts) {
  const std::string brackets(kDeepestJson + 1, '[');
  EXPECT_EQ(readJson('"' + brackets + '"'), Json(brackets));
  EXPECT_EQ(readJson("\"\\\"" + brackets + '"'), Json('"' + brackets));
  EXPECT_EQ(readJson("[\"\\\\\",[1]]"), Json::parse("[\"\\\\\",[1]]"));
}

TEST(ReadJson, CountsBracketsThatAreOpenAtOnce) {
  std::string row = "[]";
  for (std::size_t i = 0; i < 2 * kDeepestJson; ++i) row += ",[]";
  EXPECT_EQ(readJson('[' + row + ']').size(), 2 * kDeepestJson + 1);
}

}  // namespace
}  // namespace host
