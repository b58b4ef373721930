#include "ClockService/NtpRestart.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using NtpRestart::MacText;

TEST(NtpRestart, SeedIsTheLastSixDigits) {
  const struct {
    const char* mac;
    int seed;
  } table[] = {{"0001E3A1B2C3", 10597059}, {"0001e3a1b2c3", 10597059}, {"0001E3a1B2c3", 10597059},
               {"000000000000", 0},        {"FFFFFF000001", 1},        {"000000FFFFFF", 16777215},
               {"000000100000", 1048576},  {"000000012345", 74565},    {"000000abcdef", 11259375},
               {"000000678900", 6785280},  {"000000ABCDEF", 11259375}, {"zzzzzz000010", 16},
               {"::::::00000f", 15}};  // the first six characters are not read
  for (const auto& row : table) {
    int seed = -1;
    EXPECT_EQ(NtpRestart::seedOf(row.mac, seed), MacText::valid) << row.mac;
    EXPECT_EQ(seed, row.seed) << row.mac;
  }
}

void expectZeroSeed(const char* mac, MacText result) {
  int seed = -1;
  EXPECT_EQ(NtpRestart::seedOf(mac, seed), result) << "\"" << (mac != nullptr ? mac : "") << "\"";
  EXPECT_EQ(seed, 0);
}

TEST(NtpRestart, SeedOfAnInvalidTextIsZero) {
  for (const char* const mac :
       {static_cast<const char*>(nullptr), "", "0", "0001E3A1B2C", "0001E3A1B2C34",
        "00:01:E3:A1:B2", "00:01:E3:A1:B2:C3", " 0001E3A1B2C3"})
    expectZeroSeed(mac, MacText::wrongLength);
  for (const char* const mac :
       {"0001E3G1B2C3", "0001E3A1B2C ", "0001E3A1B2Cg", "0001E3-1B2C3", "0001E3@1B2C3",
        "0001E3`1B2C3", "0001E3/1B2C3", "0001E3:1B2C3", "0001E3A1B2C\xff"})
    expectZeroSeed(mac, MacText::unexpectedCharacter);
}

TEST(NtpRestart, ExtraSecondsSpreadOverTenMinutes) {
  constexpr int kLast = 2147483647;
  const struct {
    int random;
    int seconds;
  } table[] = {{0, 1},
               {1, 1},
               {3579139, 1},
               {3579140, 2},
               {kLast, 600},
               {kLast / 2, 300},
               {kLast / 2 + 1, 301},
               {kLast - 3579138, 600},
               {kLast - 3579139, 599}};
  for (const auto& row : table)
    EXPECT_EQ(NtpRestart::extraSeconds(row.random), row.seconds) << "random " << row.random;
}

TEST(NtpRestart, DelayIsTenToTwentyMinutes) {
  EXPECT_EQ(NtpRestart::delay(1), 601000U);
  EXPECT_EQ(NtpRestart::delay(300), 900000U);
  EXPECT_EQ(NtpRestart::delay(600), 1200000U);
}

}  // namespace
