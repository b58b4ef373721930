// The second reading of the rules is itself held to dates from the calendar.

#include "plugin/IndependentZones.h"

#include <gmock/gmock.h>

namespace {

using independent::secondsOf;
using independent::utcOf;
using independent::WallClock;

TEST(CivilDays, CountFrom1970InBothDirections) {
  EXPECT_EQ(independent::dayOf({1970, 1, 1}), 0);
  EXPECT_EQ(independent::dayOf({2000, 3, 1}), 11017);
  EXPECT_EQ(independent::dayOf({2038, 1, 19}), 24855);
  EXPECT_EQ(independent::dayOf({1900, 1, 1}), -25567);
  for (std::int64_t day = -30000; day < 60000; ++day)
    ASSERT_EQ(independent::dayOf(independent::dateOf(day)), day);
}

TEST(CivilDays, ReadAndWriteInstants) {
  EXPECT_EQ(secondsOf("2038-01-19T03:14:07"), 2147483647);
  EXPECT_EQ(utcOf(951782400), "2000-02-29T00:00:00");
  EXPECT_EQ(utcOf(-1), "1969-12-31T23:59:59");
}

TEST(IndependentZones, ChangeOnTheDatesOfTheCalendar) {
  struct Row {
    int zone;
    int minutesEast;
    const char* first;
    const char* second;
  };
  for (const Row& row : {Row{9, 60, "2026-03-29T01:00:00", "2026-10-25T01:00:00"},
                         Row{8, 0, "2026-03-29T01:00:00", "2026-10-25T01:00:00"},
                         Row{10, 120, "2026-03-29T01:00:00", "2026-10-25T01:00:00"},
                         Row{12, -300, "2026-03-08T07:00:00", "2026-11-01T06:00:00"},
                         Row{13, 720, "2026-04-04T14:00:00", "2026-09-26T14:00:00"},
                         Row{4, 600, "2026-04-04T16:00:00", "2026-10-03T16:00:00"}}) {
    const auto changes = WallClock({row.zone, row.minutesEast, true, true}).changesIn(2026);
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(utcOf(changes[0]), row.first) << row.zone;
    EXPECT_EQ(utcOf(changes[1]), row.second) << row.zone;
  }
}

TEST(IndependentZones, ShowTheFaceOfTheClock) {
  const WallClock newYork({12, -300, true, true});
  EXPECT_EQ(newYork.faceAt(secondsOf("2026-03-08T06:59:59")), "2026-03-08T01:59:59");
  EXPECT_EQ(newYork.faceAt(secondsOf("2026-03-08T07:00:00")), "2026-03-08T03:00:00");
  EXPECT_EQ(newYork.faceAt(secondsOf("2026-11-01T05:59:59")), "2026-11-01T01:59:59");
  EXPECT_EQ(newYork.faceAt(secondsOf("2026-11-01T06:00:00")), "2026-11-01T01:00:00");
}

TEST(IndependentZones, HaveNoChangesWithoutARuleOrWithoutDaylightSaving) {
  EXPECT_TRUE(WallClock({0, 60, true, true}).changesIn(2026).empty());
  EXPECT_TRUE(WallClock({9, 60, false, true}).changesIn(2026).empty());
  EXPECT_TRUE(WallClock({9, 60, true, false}).changesIn(2026).empty());
}

}  // namespace
