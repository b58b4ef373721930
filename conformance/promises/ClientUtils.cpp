#include "ClientUtils.h"

#include <limits>
#include <string>
#include <utility>

#include "Promise.h"

namespace {

using namespace std::string_literals;

constexpr int kMostInt = std::numeric_limits<int>::max();
constexpr int kLeastInt = std::numeric_limits<int>::min();

// A name of `length` characters, with labels of at most 49.
std::string nameOfLength(std::size_t length) {
  std::string name;
  while (name.size() < length) name += name.size() % 50 == 49 ? '.' : 'a';
  return name;
}

class ClientUtilsPromise : public conformance::Promise {};

TEST_F(ClientUtilsPromise, PrintsNumbers) {
  promises("Decimal text of a number");
  EXPECT_EQ(ClientUtils::itos(0), "0");
  EXPECT_EQ(ClientUtils::itos(-15), "-15");
  EXPECT_EQ(ClientUtils::itos(kMostInt), "2147483647");
  EXPECT_EQ(ClientUtils::itos(kLeastInt), "-2147483648");
}

TEST_F(ClientUtilsPromise, ParsesNumbersUpToTheLastDigit) {
  promises("stoi reads as far as there are digits, as strtol does in base 10");
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
                                              {"2147483647", kMostInt},
                                              {"-2147483648", kLeastInt}};
  for (const auto& [text, number] : rows) EXPECT_EQ(ClientUtils::stoi(text), number) << text;
  EXPECT_EQ(ClientUtils::stoi("1\0002"s), 1);
}

TEST_F(ClientUtilsPromise, ParsesNoDigitsAsZero) {
  promises("no digits give 0");
  for (const char* const text : {"", " ", "-", "+", "abc", "--1", "+-1", "- 1", ":5"}) {
    EXPECT_EQ(ClientUtils::stoi(text), 0) << text;
  }
}

TEST_F(ClientUtilsPromise, ParsesTooLargeANumberAsTheNearestInt) {
  promises("too large a number gives the nearest int.");
  for (const char* const text : {"2147483648", "9223372036854775808", "99999999999999999999999"}) {
    EXPECT_EQ(ClientUtils::stoi(text), kMostInt) << text;
    EXPECT_EQ(ClientUtils::stoi(std::string("-") + text + "0"), kLeastInt) << text;
  }
  EXPECT_EQ(ClientUtils::stoi("-2147483649"), kLeastInt);
}

TEST_F(ClientUtilsPromise, PrintsAndParsesBooleans) {
  promises("\"true\" and \"false\", and back. stob is true for exactly \"true\".");
  EXPECT_EQ(ClientUtils::btos(true), "true");
  EXPECT_EQ(ClientUtils::btos(false), "false");
  EXPECT_TRUE(ClientUtils::stob("true"));
  for (const char* const text :
       {"false", "", "TRUE", "True", "true ", " true", "1", "yes", "tru"}) {
    EXPECT_FALSE(ClientUtils::stob(text)) << text;
  }
}

TEST_F(ClientUtilsPromise, AcceptsHostNames) {
  promises("True for a host name of RFC 1123 form");
  for (const std::string& name : {"a"s, "localhost"s, "time.example.org"s, "time.example.org."s,
                                  "3com.example"s, "a-b"s, "A1.b2.C3"s, "1.2.3.4a"s, "x--y"s, "0a"s,
                                  // the longest label and name
                                  std::string(63, 'a'), std::string(63, 'a') + ".b",
                                  nameOfLength(253), nameOfLength(253) + "."}) {
    EXPECT_TRUE(ClientUtils::validGlobalHostname(name)) << name;
  }
}

TEST_F(ClientUtilsPromise, RefusesOtherTextsAsHostNames) {
  promises(
      "labels of 1-63 letters, digits and hyphens, none at a label's ends; the last label is not "
      "all digits");
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

TEST_F(ClientUtilsPromise, AnyThreadMayCall) {
  promises("Conversions between settings and their text. Thread: any.");
  conformance::onTwoThreads([] {
    for (int i = 0; i < 100; ++i) {
      EXPECT_EQ(ClientUtils::stoi(ClientUtils::itos(i)), i);
      EXPECT_TRUE(ClientUtils::validGlobalHostname("time" + ClientUtils::itos(i) + ".example"));
    }
  });
}

}  // namespace
