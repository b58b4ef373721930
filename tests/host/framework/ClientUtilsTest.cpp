#include "ClientUtils.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace {

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

// A name of `length` characters, of labels of at most 49.
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

TEST(ClientUtils, ReadsNumbersAsFarAsThereAreDigits) {
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

TEST(ClientUtils, ReadsNoDigitsAsZero) {
  for (const char* const text : {"", " ", "-", "+", "abc", "--1", "+-1", "- 1", ":5"}) {
    EXPECT_EQ(ClientUtils::stoi(text), 0) << text;
  }
}

TEST(ClientUtils, ReadsTooLargeANumberAsTheNearest) {
  for (const char* const text : {"2147483648", "9223372036854775808", "99999999999999999999999"}) {
    EXPECT_EQ(ClientUtils::stoi(text), kMost) << text;
    EXPECT_EQ(ClientUtils::stoi(std::string("-") + text + "0"), kLeast) << text;
  }
  EXPECT_EQ(ClientUtils::stoi("-2147483649"), kLeast);
}

TEST(ClientUtils, ReadsNoFurtherThanAZeroByte) {
  EXPECT_EQ(ClientUtils::stoi(std::string("1\0002", 3)), 1);
}

TEST(ClientUtils, PrintsAndReadsBooleans) {
  EXPECT_EQ(ClientUtils::btos(true), "true");
  EXPECT_EQ(ClientUtils::btos(false), "false");
  EXPECT_TRUE(ClientUtils::stob("true"));
  for (const char* const text :
       {"false", "", "TRUE", "True", "true ", " true", "1", "yes", "tru"}) {
    EXPECT_FALSE(ClientUtils::stob(text)) << text;
  }
}

TEST(ClientUtils, AcceptsHostNames) {
  for (const std::string& name :
       {std::string("a"), std::string("localhost"), std::string("time.example.org"),
        std::string("time.example.org."), std::string("3com.example"), std::string("a-b"),
        std::string("A1.b2.C3"), std::string("1.2.3.4a"), std::string("x--y"), std::string("0a"),
        std::string(63, 'a'), std::string(63, 'a') + ".b", nameOfLength(253),
        nameOfLength(253) + "."}) {
    EXPECT_TRUE(ClientUtils::validGlobalHostname(name)) << name;
  }
}

TEST(ClientUtils, RefusesWhatIsNoHostName) {
  for (const std::string& name : {std::string(),
                                  std::string("."),
                                  std::string(".."),
                                  std::string(".a"),
                                  std::string("a..b"),
                                  std::string("a.."),
                                  std::string("-a"),
                                  std::string("a-"),
                                  std::string("a.-b"),
                                  std::string("a-.b"),
                                  std::string("a_b"),
                                  std::string("a b"),
                                  std::string("a\n"),
                                  std::string("a\0", 2),
                                  std::string("caf\xC3\xA9"),
                                  std::string("1"),
                                  std::string("1.2.3.4"),
                                  std::string("a.5"),
                                  std::string("a.5."),
                                  std::string("::1"),
                                  std::string("a:1"),
                                  std::string("a/b"),
                                  std::string("@"),
                                  std::string("["),
                                  std::string("`"),
                                  std::string("{"),
                                  std::string(64, 'a'),
                                  std::string("b.") + std::string(64, 'a'),
                                  nameOfLength(254),
                                  nameOfLength(254) + "."}) {
    EXPECT_FALSE(ClientUtils::validGlobalHostname(name)) << name;
  }
}

}  // namespace
