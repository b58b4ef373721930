#include "ClockService/BoundaryDelay.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

#include "support/UtcInstant.h"
#include "support/ZoneGuard.h"

namespace {

using support::utcInstant;
using support::ZoneGuard;

constexpr bool kLongTime = sizeof(time_t) == sizeof(std::int64_t);

constexpr const char* kNewYork = "LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00";
constexpr const char* kBerlin = "LOC-1:00DST-2:00,M3.5.0/02:00,M10.5.0/03:00";
constexpr const char* kSydney = "LOC-10:00DST-11:00,M10.1.0/02:00,M4.1.0/03:00";
constexpr const char* kNewfoundland = "LOC03:30DST02:30,M3.2.0/00:00,M11.1.0/00:00";
constexpr const char* kBrazil = "LOC03:00DST02:00,M10.3.0/00:00,M2.3.0/00:00";
constexpr const char* kChatham = "LOC-12:45DST-13:45,M9.5.0/02:45,M4.1.0/03:45";
constexpr const char* kIndia = "LOC-5:30";

// An instant, and the seconds from it to the next full hour and to the next midnight.
struct Delay {
  time_t now;
  unsigned int hour;
  unsigned int midnight;
};

void check(const char* tz, const std::vector<Delay>& table) {
  const ZoneGuard zone(tz);
  for (const Delay& row : table) {
    EXPECT_EQ(BoundaryDelay::toNextHour(row.now), row.hour * 1000) << tz << " at " << row.now;
    EXPECT_EQ(BoundaryDelay::toNextMidnight(row.now), row.midnight * 1000)
        << tz << " at " << row.now;
  }
}

TEST(BoundaryDelay, OnAnOrdinaryDay) {
  check("UTC0", {{utcInstant(2026, 7, 1, 0, 0, 0), 3600, 86400},
                 {utcInstant(2026, 7, 1, 0, 0, 1), 3599, 86399},
                 {utcInstant(2026, 7, 1, 12, 59, 59), 1, 39601},
                 {utcInstant(2026, 7, 1, 13, 0, 0), 3600, 39600},
                 {utcInstant(2026, 7, 1, 23, 30), 1800, 1800},
                 {utcInstant(2026, 7, 1, 23, 59, 59), 1, 1}});
  check(kIndia, {{utcInstant(2026, 7, 1, 12, 29, 59), 1, 21601},
                 {utcInstant(2026, 7, 1, 12, 30, 0), 3600, 21600},
                 {utcInstant(2026, 7, 1, 18, 29, 59), 1, 1}});
}

TEST(BoundaryDelay, AtTheEndOfAMonth) {
  check("UTC0", {{utcInstant(2026, 4, 30, 23, 59, 59), 1, 1},
                 {utcInstant(2026, 2, 28, 23, 59, 59), 1, 1},
                 {utcInstant(2028, 2, 28, 23, 0, 0), 3600, 3600},
                 {utcInstant(2028, 2, 29, 23, 59, 59), 1, 1}});
}

TEST(BoundaryDelay, AtTheEndOfAYear) {
  check("UTC0", {{utcInstant(2026, 12, 31, 23, 59, 59), 1, 1},
                 {utcInstant(2027, 1, 1, 0, 0, 0), 3600, 86400},
                 {utcInstant(2037, 12, 31, 23, 59, 59), 1, 1},
                 {utcInstant(1970, 1, 1), 3600, 86400}});
  check(kSydney, {{utcInstant(2026, 12, 31, 12, 59, 59), 1, 1},
                  {utcInstant(2026, 12, 31, 13, 0, 0), 3600, 86400}});
  check(kNewYork, {{utcInstant(2027, 1, 1, 4, 59, 59), 1, 1},
                   {utcInstant(2027, 1, 1, 5, 0, 0), 3600, 86400}});
}

// On the day of a change the delay to midnight is computed with the current daylight flag, so it is
// an hour off. Each full hour before midnight computes it again.
TEST(BoundaryDelay, AroundTheChangesInTheNorth) {
  check(kNewYork, {{utcInstant(2026, 3, 8, 6, 59, 59), 1, 79201},      // 01:59:59
                   {utcInstant(2026, 3, 8, 7, 0, 0), 3600, 75600},     // 03:00:00
                   {utcInstant(2026, 11, 1, 5, 59, 59), 1, 79201},     // 01:59:59
                   {utcInstant(2026, 11, 1, 6, 0, 0), 3600, 82800},    // 01:00:00 again
                   {utcInstant(2026, 11, 1, 6, 59, 59), 1, 79201}});   // 01:59:59 again
  check(kBerlin, {{utcInstant(2026, 3, 29, 0, 59, 59), 1, 79201},      // 01:59:59
                  {utcInstant(2026, 3, 29, 1, 0, 0), 3600, 75600},     // 03:00:00
                  {utcInstant(2026, 10, 25, 0, 59, 59), 1, 75601},     // 02:59:59
                  {utcInstant(2026, 10, 25, 1, 0, 0), 3600, 79200}});  // 02:00:00 again
}

TEST(BoundaryDelay, AroundTheChangesInTheSouth) {
  check(kSydney, {{utcInstant(2026, 4, 4, 15, 59, 59), 1, 75601},      // 02:59:59
                  {utcInstant(2026, 4, 4, 16, 0, 0), 3600, 79200},     // 02:00:00 again
                  {utcInstant(2026, 10, 3, 15, 59, 59), 1, 79201},     // 01:59:59
                  {utcInstant(2026, 10, 3, 16, 0, 0), 3600, 75600}});  // 03:00:00
}

TEST(BoundaryDelay, AroundChangesAtLocalMidnight) {
  check(kBrazil, {{utcInstant(2026, 2, 15, 1, 59, 59), 1, 1},             // Saturday 23:59:59
                  {utcInstant(2026, 2, 15, 2, 0, 0), 3600, 3600},         // Saturday 23:00:00 again
                  {utcInstant(2026, 2, 15, 2, 59, 59), 1, 1},             // Saturday 23:59:59 again
                  {utcInstant(2026, 10, 18, 2, 59, 59), 1, 1},            // Saturday 23:59:59
                  {utcInstant(2026, 10, 18, 3, 0, 0), 3600, 82800}});     // Sunday 01:00:00
  check(kNewfoundland, {{utcInstant(2026, 3, 8, 3, 29, 59), 1, 1},        // 23:59:59
                        {utcInstant(2026, 3, 8, 3, 30, 0), 3600, 82800},  // 01:00:00
                        {utcInstant(2026, 11, 1, 2, 29, 59), 1, 1},       // 23:59:59
                        {utcInstant(2026, 11, 1, 2, 30, 0), 3600, 3600}});  // 23:00:00 again
}

TEST(BoundaryDelay, AroundChangesInTheMiddleOfAnHour) {
  check(kChatham, {{utcInstant(2026, 4, 4, 13, 59, 59), 901, 72901},   // 03:44:59
                   {utcInstant(2026, 4, 4, 14, 0, 0), 900, 76500},     // 02:45:00 again
                   {utcInstant(2026, 9, 26, 13, 59, 59), 901, 76501},  // 02:44:59
                   {utcInstant(2026, 9, 26, 14, 0, 0), 900, 72900}});  // 03:45:00
}

// After the last second that 32 bits hold, mktime may fail. The boundary is then that of a day
// without a daylight-saving change.
TEST(BoundaryDelay, AtTheEndOfThirtyTwoBitTime) {
  check("UTC0", {{utcInstant(2038, 1, 19, 3, 14, 7), 2753, 74753},
                 {utcInstant(2038, 1, 19, 2, 59, 59), 1, 75601},
                 {utcInstant(2038, 1, 18, 12, 0, 0), 3600, 43200}});
}

// A delay of 0 would make the timer fire in a loop. The year 2147485547 is the last that a tm
// holds.
TEST(BoundaryDelay, IsDefinedAndNeverZeroAtTheLimitsOfTime) {
  constexpr std::int64_t kLastYear = 67768036191676799;
  for (const char* const tz : {"UTC0", kNewYork, kChatham}) {
    const ZoneGuard zone(tz);
    for (const std::int64_t end :
         {INT64_MIN, INT64_MAX, -kLastYear, kLastYear, std::int64_t{INT32_MIN},
          std::int64_t{INT32_MAX}, std::int64_t{-1}, std::int64_t{0}}) {
      for (const std::int64_t step : {-86400, -1, 0, 1, 86400}) {
        const bool beyond = step < 0 ? end < INT64_MIN - step : end > INT64_MAX - step;
        const auto now = static_cast<time_t>(beyond ? end : end + step);
        EXPECT_GT(BoundaryDelay::toNextHour(now), 0U) << tz << " at " << now;
        EXPECT_GT(BoundaryDelay::toNextMidnight(now), 0U) << tz << " at " << now;
        BoundaryDelay::localDay(now);
      }
    }
  }
  const ZoneGuard zone("UTC0");
  constexpr time_t kLast = std::numeric_limits<time_t>::max();
  EXPECT_LE(BoundaryDelay::toNextHour(kLast), 3600 * 1000U);
  EXPECT_LE(BoundaryDelay::toNextMidnight(kLast), 86400 * 1000U);
}

// The first 32-bit time_t is 1901-12-13T20:45:52Z, whose next boundaries are near.
TEST(BoundaryDelay, StopsAtTheLongestPeriodOfATimer) {
  const ZoneGuard zone("UTC0");
  constexpr time_t kFirst = std::numeric_limits<time_t>::min();
  constexpr unsigned int kLongest = std::numeric_limits<unsigned int>::max();
  EXPECT_EQ(BoundaryDelay::toNextHour(kFirst), kLongTime ? kLongest : 848'000);
  EXPECT_EQ(BoundaryDelay::toNextMidnight(kFirst), kLongTime ? kLongest : 11'648'000);
}

TEST(BoundaryDelay, IsNeverZeroNorMoreThanTwoHoursOrTwoDays) {
  constexpr time_t kStep = 3 * 3600 + 7 * 60 + 13;
  for (const char* const tz :
       {"UTC0", kNewYork, kBerlin, kSydney, kNewfoundland, kBrazil, kChatham, kIndia}) {
    const ZoneGuard zone(tz);
    for (time_t now = utcInstant(2027, 1, 1); now < utcInstant(2028, 1, 1); now += kStep) {
      const unsigned int hour = BoundaryDelay::toNextHour(now);
      const unsigned int midnight = BoundaryDelay::toNextMidnight(now);
      EXPECT_TRUE(hour > 0 && hour <= 2 * 3600 * 1000U) << tz << " at " << now << ": " << hour;
      EXPECT_TRUE(midnight > 0 && midnight <= 2 * 86400 * 1000U)
          << tz << " at " << now << ": " << midnight;
    }
  }
}

// With a 32-bit time_t the day always fits into an int.
TEST(BoundaryDelay, LocalDayStopsAtTheLimitsOfItsType) {
  const ZoneGuard zone("UTC0");
  constexpr std::int64_t kFarAway = 300'000 * std::int64_t{31'556'952};  // as many years
  using Time = std::numeric_limits<time_t>;
  using Day = std::numeric_limits<int>;
  EXPECT_EQ(BoundaryDelay::localDay(kLongTime ? static_cast<time_t>(kFarAway) : Time::max()),
            kLongTime ? Day::max() : 2038'01'19);
  EXPECT_EQ(BoundaryDelay::localDay(kLongTime ? static_cast<time_t>(-kFarAway) : Time::min()),
            kLongTime ? Day::min() : 1901'12'13);
}

TEST(BoundaryDelay, DateNumberIsYearMonthAndDay) {
  EXPECT_EQ(BoundaryDelay::dateNumber(7, 3, 2024), 20240307);
  EXPECT_EQ(BoundaryDelay::dateNumber(31, 12, 2037), 20371231);
  EXPECT_EQ(BoundaryDelay::dateNumber(1, 1, 2147483647), 2147483647);
}

TEST(BoundaryDelay, LocalDayIsTheLocalDateAsOneNumber) {
  const ZoneGuard zone(kNewYork);
  EXPECT_EQ(BoundaryDelay::localDay(utcInstant(2024, 3, 7, 12)), 20240307);
  EXPECT_EQ(BoundaryDelay::localDay(utcInstant(2026, 1, 1, 4, 59, 59)), 20251231);
  EXPECT_EQ(BoundaryDelay::localDay(utcInstant(2026, 1, 1, 5, 0, 0)), 20260101);
  EXPECT_EQ(BoundaryDelay::localDay(utcInstant(2026, 7, 1, 3, 59, 59)), 20260630);
  EXPECT_EQ(BoundaryDelay::localDay(utcInstant(2026, 7, 1, 4, 0, 0)), 20260701);
}

}  // namespace
