// How the delay to a boundary uses mktime. Where time_t has 32 bits, mktime fails beyond 2038;
// these tests make it fail here.

#include <gtest/gtest.h>

#include <ctime>

#include "ClockService/BoundaryDelay.h"
#include "support/UtcInstant.h"
#include "support/ZoneGuard.h"

namespace {

tm g_asked{};
time_t g_answer = 0;

}  // namespace

// The linker replaces mktime with this function.
extern "C" time_t __wrap_mktime(tm* local);  // NOLINT(bugprone-reserved-identifier)

extern "C" time_t __wrap_mktime(tm* local) {  // NOLINT(bugprone-reserved-identifier)
  g_asked = *local;
  return g_answer;
}

namespace {

using support::utcInstant;

// 22:47:35 on 30 June 2026, under daylight saving.
constexpr time_t kNow = utcInstant(2026, 6, 30, 20, 47, 35);
constexpr unsigned int kToHour = 12 * 60 + 25;
constexpr unsigned int kToMidnight = 3600 + kToHour;

class Mktime : public testing::Test {
 protected:
  const support::ZoneGuard zone{"LOC-1:00DST-2:00,M3.5.0/02:00,M10.5.0/03:00"};
};

// The current daylight flag is kept, and mktime normalises the fields.
TEST_F(Mktime, GetsTheNextFullHourAndTheNextMidnight) {
  BoundaryDelay::toNextHour(kNow);
  EXPECT_EQ(g_asked.tm_mday, 30);
  EXPECT_EQ(g_asked.tm_hour, 23);
  EXPECT_EQ(g_asked.tm_min + g_asked.tm_sec, 0);
  EXPECT_GT(g_asked.tm_isdst, 0);
  BoundaryDelay::toNextMidnight(kNow);
  EXPECT_EQ(g_asked.tm_mday, 31);
  EXPECT_EQ(g_asked.tm_mon, 5);
  EXPECT_EQ(g_asked.tm_hour + g_asked.tm_min + g_asked.tm_sec, 0);
  EXPECT_GT(g_asked.tm_isdst, 0);
}

TEST_F(Mktime, DecidesWhenTheBoundaryIs) {
  for (const time_t seconds : {1, 7, 3600, 100'000}) {
    g_answer = kNow + seconds;
    EXPECT_EQ(BoundaryDelay::toNextHour(kNow), seconds * 1000);
    EXPECT_EQ(BoundaryDelay::toNextMidnight(kNow), seconds * 1000);
  }
}

TEST_F(Mktime, IsLimitedToTheLongestTimerPeriod) {
  constexpr time_t kFurthest = 4'294'967;
  g_answer = kNow + kFurthest;
  EXPECT_EQ(BoundaryDelay::toNextHour(kNow), 4'294'967'000U);
  g_answer = kNow + kFurthest + 1;
  EXPECT_EQ(BoundaryDelay::toNextHour(kNow), 4'294'967'295U);
}

// Otherwise the timer would fire in a loop.
TEST_F(Mktime, IsIgnoredWhenItFailsOrGoesBack) {
  for (const time_t answer : {time_t{-1}, time_t{0}, kNow - 1, kNow}) {
    g_answer = answer;
    EXPECT_EQ(BoundaryDelay::toNextHour(kNow), kToHour * 1000) << answer;
    EXPECT_EQ(BoundaryDelay::toNextMidnight(kNow), kToMidnight * 1000) << answer;
  }
  g_answer = -1;  // before 1970, -1 is later than the current time
  EXPECT_EQ(BoundaryDelay::toNextHour(kNow - utcInstant(2027, 1, 1)), kToHour * 1000);
}

}  // namespace
