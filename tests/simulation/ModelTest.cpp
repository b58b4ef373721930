// The model's own arithmetic, held to the C library's: the lives are only as good as this.

#include <gtest/gtest.h>

#include <ctime>

#include "simulation/Chance.h"
#include "simulation/model/Texts.h"
#include "simulation/model/TimeZoneOf.h"
#include "simulation/model/Zone.h"
#include "support/ZoneGuard.h"

namespace simulation {
namespace {

Civil civil(const tm& record) {
  return {record.tm_year + 1900, record.tm_mon + 1, record.tm_mday,
          record.tm_hour,        record.tm_min,     record.tm_sec};
}

TEST(SimulationModel, CalendarGoesWithTheCLibrary) {
  Chance chance(1);
  for (int i = 0; i < 100000; ++i) {
    const time_t instant = chance.between(-70000000000, 70000000000);
    tm utc{};
    gmtime_r(&instant, &utc);
    const Civil reading = readingAt(instant);
    ASSERT_EQ(reading, civil(utc)) << instant;
    ASSERT_EQ(secondsTo(reading), instant);
    ASSERT_EQ(weekdayOf(floorOf(instant, 86400)), utc.tm_wday) << instant;
  }
}

TEST(SimulationModel, OverflowingFieldsAreNormalised) {
  EXPECT_EQ(readingAt(secondsTo({2024, 1, 32})), (Civil{2024, 2, 1}));
  EXPECT_EQ(readingAt(secondsTo({2024, 14, 30})), (Civil{2025, 3, 2}));
  EXPECT_EQ(readingAt(secondsTo({2024, 0, 0})), (Civil{2023, 11, 30}));
  EXPECT_EQ(readingAt(secondsTo({2023, 12, 31, 24, 0, -1})), (Civil{2023, 12, 31, 23, 59, 59}));
}

void expectLocalTime(const Zone& zone, time_t instant, const std::string& tz) {
  tm local{};
  localtime_r(&instant, &local);
  ASSERT_EQ(zone.localAt(instant), civil(local)) << tz << " at " << instant;
  ASSERT_EQ(zone.isDaylight(instant), local.tm_isdst > 0) << tz << " at " << instant;
}

// A reading with a daylight flag, as a setter would ask for it.
void expectInstant(const Zone& zone, tm asked, const std::string& tz) {
  const Civil reading = civil(asked);
  const bool daylight = asked.tm_isdst > 0;
  const time_t instant = mktime(&asked);
  ASSERT_EQ(zone.instantOf(reading, daylight), instant) << tz << " " << utcText(secondsTo(reading));
}

void expectZone(const std::string& tz, Chance& chance) {
  const support::ZoneGuard guard(tz);
  const Zone zone(tz);
  for (int i = 0; i < 40; ++i) {
    const time_t instant = chance.between(90000000, 2147483647);
    expectLocalTime(zone, instant, tz);
    const time_t change = zone.changeAfter(instant);
    for (const time_t near : {change - 1, change, change + 1}) expectLocalTime(zone, near, tz);
    tm asked{};
    const time_t base = change + chance.between(-7200, 7200);
    localtime_r(&base, &asked);
    asked.tm_isdst = zone.changes() ? static_cast<int>(chance.between(0, 1)) : asked.tm_isdst;
    asked.tm_hour += static_cast<int>(chance.between(-3, 3));
    expectInstant(zone, asked, tz);
  }
}

TEST(SimulationModel, EveryZoneAndOffsetGoesWithTheCLibrary) {
  Chance chance(2);
  for (int zone = 0; zone < 15; ++zone) {
    for (int quarters = -50; quarters <= 50; ++quarters) {
      const float hours = static_cast<float>(quarters) / 4;
      for (const bool daylight : {false, true}) {
        for (const int minutes : {60, 30, 120, -60}) {
          const ZoneOutcome outcome = timeZoneOf({hours, daylight, minutes, true, zone});
          ASSERT_NO_FATAL_FAILURE(expectZone(outcome.tz, chance));
        }
      }
    }
  }
}

TEST(SimulationModel, SettingsThatMakeNoSenseGoWithTheCLibraryToo) {
  Chance chance(3);
  for (const float hours : {1e30F, -1e30F, 13.0F, 1000.0F, 0.025F}) {
    for (const int minutes : {2147483647, -2147483647 - 1, 0, 1440}) {
      for (int zone = 0; zone < 15; ++zone) {
        const ZoneOutcome outcome = timeZoneOf({hours, true, minutes, true, zone});
        ASSERT_LE(outcome.tz.size(), 49U);
        ASSERT_NO_FATAL_FAILURE(expectZone(outcome.tz, chance));
      }
    }
  }
}

TEST(SimulationModel, TzTextIsThatOfTheTable) {
  const auto tz = [](float hours, bool daylight, int minutes, bool automatic, int zone) {
    return timeZoneOf({hours, daylight, minutes, automatic, zone});
  };
  EXPECT_EQ(tz(1, false, 60, false, 0).tz, "LOC-1:00");
  EXPECT_EQ(tz(-5, false, 60, false, 0).tz, "LOC05:00");
  EXPECT_EQ(tz(5.5, false, 60, false, 0).tz, "LOC-5:30");
  EXPECT_EQ(tz(1, true, 60, false, 0).tz, "LOC-2:00");
  EXPECT_EQ(tz(1, true, 60, true, 9).tz, "LOC-1:00DST-2:00,M3.5.0/02:00,M10.5.0/03:00");
  EXPECT_EQ(tz(0, true, 30, false, 0).tz, "LOC-00:30");
  EXPECT_EQ(tz(-5, true, 60, true, 12).tz, "LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00");
  EXPECT_EQ(tz(0.5, false, 60, false, 0).tz, "LOC00:30");
  EXPECT_EQ(tz(1, true, 60, true, 9).displayMinutes, 60);
  EXPECT_EQ(tz(1, true, 60, false, 9).displayMinutes, 120);
}

}  // namespace
}  // namespace simulation
