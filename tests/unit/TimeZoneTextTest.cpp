#include "ClockService/TimeZoneText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

using TimeZoneText::LocalZone;
using TimeZoneText::Settings;

constexpr float kInfiniteHours = std::numeric_limits<float>::infinity();
constexpr float kNoHours = std::numeric_limits<float>::quiet_NaN();
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
constexpr const char* kEurope = "M3.5.0/02:00,M10.5.0/03:00";
constexpr const char* kAmerica = "M3.2.0/02:00,M11.1.0/02:00";

enum Saving { off, byHand, byRule };

// Settings, and the zone that they give.
struct ZoneText {
  float utcOffset;
  Saving saving;
  std::int32_t minutes;
  const char* rule;
  const char* tz;
  std::int32_t offsetMinutes;
};

Settings settingsOf(const ZoneText& row) {
  Settings settings;
  settings.utcOffset = row.utcOffset;
  settings.daylightSaving = row.saving != off;
  settings.daylightMinutes = row.minutes;
  settings.automatic = row.saving == byRule;
  settings.rule = row.rule;
  return settings;
}

std::string describe(const ZoneText& row) {
  const char* const savings[] = {"off", "by hand", "by rule"};
  return "offset " + std::to_string(row.utcOffset) + ", daylight saving " + savings[row.saving] +
         ", " + std::to_string(row.minutes) + " minutes, rule \"" + row.rule + "\"";
}

void check(const std::vector<ZoneText>& table) {
  for (const ZoneText& row : table) {
    const LocalZone zone = TimeZoneText::localZone(settingsOf(row));
    EXPECT_STREQ(zone.tz.data(), row.tz) << describe(row);
    EXPECT_EQ(zone.offsetMinutes, row.offsetMinutes) << describe(row);
  }
}

TEST(TimeZoneText, HoursAreTwoWideWithTheirSign) {
  check({{0.0F, off, 60, "", "LOC00:00", 0},
         {1.0F, off, 60, "", "LOC-1:00", 60},
         {9.0F, off, 60, "", "LOC-9:00", 540},
         {10.0F, off, 60, "", "LOC-10:00", 600},
         {12.5F, off, 60, "", "LOC-12:30", 750},
         {-5.0F, off, 60, "", "LOC05:00", -300},
         {-10.0F, off, 60, "", "LOC10:00", -600},
         {-12.5F, off, 60, "", "LOC12:30", -750},
         {-3.5F, off, 60, "", "LOC03:30", -210},
         {5.5F, off, 60, "", "LOC-5:30", 330},
         {5.75F, off, 60, "", "LOC-5:45", 345},
         {-1.25F, off, 60, "", "LOC01:15", -75},
         {14.0F, off, 60, "", "LOC-14:00", 840}});
}

TEST(TimeZoneText, OffsetUnderAnHourLosesItsSignWithoutDaylightSaving) {
  check({{0.5F, off, 60, "", "LOC00:30", 30},
         {-0.5F, off, 60, "", "LOC00:30", -30},
         {0.75F, off, 60, "", "LOC00:45", 45},
         {-0.75F, off, 60, "", "LOC00:45", -45}});
}

TEST(TimeZoneText, OffsetUnderAnHourKeepsItsSignWithDaylightSavingByHand) {
  check({{1.0F, byHand, 60, "", "LOC-2:00", 120},
         {0.5F, byHand, 60, "", "LOC-1:30", 90},
         {-0.5F, byHand, 60, "", "LOC-00:30", 30},
         {-0.75F, byHand, 60, "", "LOC-00:15", 15},
         {-1.0F, byHand, 60, "", "LOC00:00", 0},
         {-1.5F, byHand, 60, "", "LOC00:30", -30},
         {-1.0F, byHand, 59, "", "LOC00:01", -1},
         {-1.0F, byHand, 61, "", "LOC-00:01", 1},
         {0.0F, byHand, 30, "", "LOC-00:30", 30},
         {0.0F, byHand, 59, "", "LOC-00:59", 59},
         {0.0F, byHand, 60, "", "LOC-1:00", 60}});
}

TEST(TimeZoneText, DaylightPartUnderAnHourKeepsItsSignByRule) {
  check({{-0.5F, byRule, 60, kEurope, "LOC00:30DST-00:30,M3.5.0/02:00,M10.5.0/03:00", -30},
         {0.0F, byRule, 30, kEurope, "LOC00:00DST-00:30,M3.5.0/02:00,M10.5.0/03:00", 0},
         {0.0F, byRule, 60, kEurope, "LOC00:00DST-1:00,M3.5.0/02:00,M10.5.0/03:00", 0},
         {-1.0F, byRule, 60, kAmerica, "LOC01:00DST00:00,M3.2.0/02:00,M11.1.0/02:00", -60},
         {-1.5F, byRule, 60, kAmerica, "LOC01:30DST00:30,M3.2.0/02:00,M11.1.0/02:00", -90},
         {0.5F, byRule, 60, kEurope, "LOC00:30DST-1:30,M3.5.0/02:00,M10.5.0/03:00", 30}});
}

// The longest value that a user can choose fits exactly.
TEST(TimeZoneText, EveryRuleFitsWithAnyOffsetOfHours) {
  check({{1.0F, byRule, 60, kEurope, "LOC-1:00DST-2:00,M3.5.0/02:00,M10.5.0/03:00", 60},
         {-5.0F, byRule, 60, kAmerica, "LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00", -300},
         {12.5F, byRule, 60, "M10.5.0/02:00,M10.5.0/03:00",
          "LOC-12:30DST-13:30,M10.5.0/02:00,M10.5.0/03:00", 750},
         {-3.5F, byRule, 60, "M3.2.0/00:00,M11.1.0/00:00",
          "LOC03:30DST02:30,M3.2.0/00:00,M11.1.0/00:00", -210}});
}

TEST(TimeZoneText, RuleWithoutTextIsDaylightSavingByHand) {
  check({{1.0F, byRule, 60, "", "LOC-2:00", 120},
         {-0.5F, byRule, 60, "", "LOC-00:30", 30},
         {-5.0F, byRule, 60, "", "LOC04:00", -240}});
}

TEST(TimeZoneText, RuleCountsOnlyWhenAutomatic) {
  check({{1.0F, byHand, 60, kEurope, "LOC-2:00", 120}, {1.0F, off, 60, kEurope, "LOC-1:00", 60}});
}

TEST(TimeZoneText, AutomaticCountsOnlyWithDaylightSaving) {
  Settings settings = settingsOf({1.0F, byRule, 60, kEurope, "", 0});
  settings.daylightSaving = false;
  const LocalZone zone = TimeZoneText::localZone(settings);
  EXPECT_STREQ(zone.tz.data(), "LOC-1:00");
  EXPECT_EQ(zone.offsetMinutes, 60);
}

TEST(TimeZoneText, DaylightMinutesMayBeAnyNumber) {
  check({{1.0F, byHand, 0, "", "LOC-1:00", 60},
         {1.0F, byHand, -60, "", "LOC00:00", 0},
         {1.0F, byHand, -90, "", "LOC00:30", -30},
         {0.0F, byHand, 120, "", "LOC-2:00", 120},
         {0.0F, byHand, -1, "", "LOC00:01", -1},
         {0.0F, byHand, 1, "", "LOC-00:01", 1}});
}

TEST(TimeZoneText, PartOfAMinuteIsDropped) {
  check({{0.025F, off, 60, "", "LOC00:01", 1},
         {-0.025F, off, 60, "", "LOC00:01", -1},
         {0.016F, off, 60, "", "LOC00:00", 0},
         {1.99F, off, 60, "", "LOC-1:59", 119},
         {1.15F, off, 60, "", "LOC-1:08", 68},  // as a float, less than 69 minutes
         {-1.99F, off, 60, "", "LOC01:59", -119}});
}

TEST(TimeZoneText, NotANumberIsUtc) {
  check({{kNoHours, off, 60, "", "LOC00:00", 0},
         {kNoHours, byHand, 60, "", "LOC-1:00", 60},
         {kNoHours, byRule, 60, kEurope, "LOC00:00DST-1:00,M3.5.0/02:00,M10.5.0/03:00", 0}});
}

TEST(TimeZoneText, HugeOffsetStopsAtTheLimit) {
  for (const float huge : {kInfiniteHours, 1e30F, std::numeric_limits<float>::max(), 35791395.0F}) {
    check({{huge, off, 60, "", "LOC-35791394:07", kHighest},
           {-huge, off, 60, "", "LOC35791394:07", -kHighest},
           {huge, byHand, 60, "", "LOC-35791394:07", kHighest},
           {-huge, byHand, 60, "", "LOC35791393:07", -kHighest + 60}});
  }
}

TEST(TimeZoneText, HugeDaylightSavingStopsAtTheLimit) {
  check({{0.0F, byHand, kLowest, "", "LOC35791394:07", -kHighest},
         {0.0F, byHand, kHighest, "", "LOC-35791394:07", kHighest},
         {12.5F, byHand, kHighest, "", "LOC-35791394:07", kHighest},
         {-12.5F, byHand, kLowest, "", "LOC35791394:07", -kHighest},
         {1e30F, byHand, kLowest, "", "LOC00:01", -1},
         {-1e30F, byHand, kHighest, "", "LOC00:00", 0}});
}

TEST(TimeZoneText, LongValueIsCutAtFortyNineCharacters) {
  check({{kInfiniteHours, byRule, kHighest, kEurope,
          "LOC-35791394:07DST-35791394:07,M3.5.0/02:00,M10.5", kHighest},
         {-kInfiniteHours, byRule, kLowest, kAmerica,
          "LOC35791394:07DST35791394:07,M3.2.0/02:00,M11.1.0", -kHighest}});
}

TEST(TimeZoneText, ValueIsNeverLongerAndAlwaysTerminated) {
  const std::string longRule(200, 'M');
  for (const float offset : {0.0F, 0.5F, -0.5F, 12.5F, -12.5F, 1e30F, -1e30F, kInfiniteHours,
                             -kInfiniteHours, kNoHours, 1e-40F, 596523.2F}) {
    for (const std::int32_t minutes : {0, 60, -60, 30, 1439, kLowest, kHighest, kLowest + 1}) {
      for (const Saving saving : {off, byHand, byRule}) {
        const ZoneText row{offset, saving, minutes, longRule.c_str(), "", 0};
        const LocalZone zone = TimeZoneText::localZone(settingsOf(row));
        const std::size_t length = strnlen(zone.tz.data(), zone.tz.size());
        EXPECT_LE(length, 49U) << describe(row);
        EXPECT_GE(length, 8U) << describe(row);
      }
    }
  }
}

TEST(TimeZoneText, ScriptExportsTheValue) {
  for (const std::string tz : {"", "LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00"})
    EXPECT_EQ(TimeZoneText::script(tz.c_str()), "#!/bin/sh\n\nexport TZ=" + tz + "\n\n");
}

}  // namespace
