#include "ClientUtils.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace {

using namespace std::string_literals;

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

// A name of `length` characters, with labels of at most 49.
std::string nameOfLength(std::size_t length) {
  std::string name;
  while (name.size() < length) name += name.size() % 50 == 49 ? '.' : 'a';
  return name;
}

TEST(ClientUtils, PrintsNumbers) {
  EXPECT_EQ(ClientUtils::itos(0), "0");
  EXPECT_EQ(ClientUtils::itos(-15), "-15");
  EXPECT_EQ(ClientUtils::itos(kMost), "2147483647");
  EXPECT_EQ(ClientUtils::itos(kLeast), "-2147483648");
}

TEST(ClientUtils, ParsesNumbersUpToTheLastDigit) {
  const std::pair<const char*, int> rows[] = {{"0", 0},
                                              {"7", 7},
                                              {"-7", -7},
                                              {"+7", 7},
                                              {"007", 7},
                                              {" \t\n\v\f\r12", 12},
                                              {"12:30", 12},
                                              {"12abc", 12},
                                              {"0x10", 0},
                                              {"1e3", 1},
                                              {"1.9", 1},
                                              {"2147483647", kMost},
                                              {"-2147483648", kLeast}};
  for (const auto& [text, number] : rows) EXPECT_EQ(ClientUtils::stoi(text), number) << text;
}

TEST(ClientUtils, ParsesNoDigitsAsZero) {
  for (const char* const text : {"", " ", "-", "+", "abc", "--1", "+-1", "- 1", ":5"}) {
    EXPECT_EQ(ClientUtils::stoi(text), 0) << text;
  }
}

TEST(ClientUtils, ParsesTooLargeANumberAsTheNearestInt) {
  for (const char* const text : {"2147483648", "9223372036854775808", "99999999999999999999999"}) {
    EXPECT_EQ(ClientUtils::stoi(text), kMost) << text;
    EXPECT_EQ(ClientUtils::stoi(std::string("-") + text + "0"), kLeast) << text;
  }
  EXPECT_EQ(ClientUtils::stoi("-2147483649"), kLeast);
}

TEST(ClientUtils, ParsesUpToAZeroByte) {
  EXPECT_EQ(ClientUtils::stoi(std::string("1\0002", 3)), 1);
}

TEST(ClientUtils, PrintsAndParsesBooleans) {
  EXPECT_EQ(ClientUtils::btos(true), "true");
  EXPECT_EQ(ClientUtils::btos(false), "false");
  EXPECT_TRUE(ClientUtils::stob("true"));
  for (const char* const text :
       {"false", "", "TRUE", "True", "true ", " true", "1", "yes", "tru"}) {
    EXPECT_FALSE(ClientUtils::stob(text)) << text;
  }
}

TEST(ClientUtils, AcceptsHostNames) {
  for (const std::string& name : {"a"s, "localhost"s, "time.example.org"s, "time.example.org."s,
                                  "3com.example"s, "a-b"s, "A1.b2.C3"s, "1.2.3.4a"s, "x--y"s, "0a"s,
                                  // the longest label and name
                                  std::string(63, 'a'), std::string(63, 'a') + ".b",
                                  nameOfLength(253), nameOfLength(253) + "."}) {
    EXPECT_TRUE(ClientUtils::validGlobalHostname(name)) << name;
  }
}

TEST(ClientUtils, RefusesOtherTextsAsHostNames) {
  for (const std::string& name : {// empty labels
                                  ""s, "."s, ".."s, ".a"s, "a..b"s, "a.."s,
                                  // hyphens at the ends of labels
                                  "-a"s, "a-"s, "a.-b"s, "a-.b"s,
                                  // other characters
                                  "a_b"s, "a b"s, "a\n"s, "a\0"s, "caf\xC3\xA9"s, "::1"s, "a:1"s,
                                  "a/b"s, "@"s, "["s, "`"s, "{"s,
                                  // a last label of digits
                                  "1"s, "1.2.3.4"s, "a.5"s, "a.5."s,
                                  // too long
                                  std::string(64, 'a'), "b." + std::string(64, 'a'),
                                  nameOfLength(254), nameOfLength(254) + "."}) {
    EXPECT_FALSE(ClientUtils::validGlobalHostname(name)) << name;
  }
}

}  // namespace
