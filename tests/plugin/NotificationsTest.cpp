// What observers hear of hours, midnights, set times and dates, and changes of daylight saving.

#include <gmock/gmock.h>

#include "plugin/ClockOnWatchedTimers.h"

namespace {

using namespace plugin;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ClockOnWatchedTimers, StartsTheTimerOfASetTimeOnceTheTimeIsSet) {
  start();
  std::vector<std::string> shown;
  timers.onCall = [&](const std::string& /*call*/) {
    shown.push_back(service->getTime() + " " + service->getDate());
  };
  service->setTime(10, 20, 30);
  service->setDate(20, 6, 2030);
  timers.onCall = nullptr;
  EXPECT_THAT(shown, ElementsAre("10:20 15.06.30", "10:20 20.06.30"));
}

// The time is set half a millisecond before the full hour, so the hour expires first.
TEST_F(ClockOnWatchedTimers, AnnouncesASetTimeOnceWhenTheHourFollowsWithinAMillisecond) {
  startAt("2030-06-15T22:59:59");
  heard(seconds{1} - microseconds{500});
  service->setTime(10, 20, 30);
  EXPECT_THAT(heard(microseconds{499}), IsEmpty());
  EXPECT_THAT(heard(microseconds{1}), ElementsAre("time 10:20:31"));
  EXPECT_THAT(timers.armed(), testing::Not(testing::Contains(kTimeChanged)));
  EXPECT_THAT(heard(minutes{39}), IsEmpty());
  EXPECT_THAT(heard(minutes{1}), ElementsAre("time 11:00:00"));
}

TEST_F(ClockOnWatchedTimers, AnnouncesASetTimeBeforeALaterHour) {
  startAt("2030-06-15T22:59:59");
  heard(seconds{1} - microseconds{1500});
  service->setTime(10, 20, 30);
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("date 15.06.2030", "time 10:20:30"));
  EXPECT_THAT(heard(minutes{39}), IsEmpty());  // the hour of the former time was cancelled
}

// Two timers due at the same instant cause one event, whichever is delivered first.
TEST_F(ClockOnWatchedTimers, AnnouncesASetTimeOnceWhenItIsDueWithTheHour) {
  startAt("2030-06-15T22:59:59");
  heard(seconds{1} - milliseconds{1});
  service->setTime(10, 20, 30);
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("date 15.06.2030", "time 10:20:31"));
}

TEST_F(ClockOnReversedTimers, AnnouncesASetTimeOnceWhenItIsDueWithTheHour) {
  startAt("2030-06-15T22:59:59");
  heard(seconds{1} - milliseconds{1});
  service->setTime(10, 20, 30);
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("time 10:20:31"));
}

TEST_F(ClockOnWatchedTimers, AnnouncesEachHourOnce) {
  startAt("2030-06-15T22:59:59");
  EXPECT_THAT(heard(seconds{1}), ElementsAre("time 23:00:00"));
  EXPECT_THAT(heard(hours{1} - milliseconds{1}), IsEmpty());
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("time 00:00:00", "date 16.06.2030"));
}

TEST_F(ClockOnWatchedTimers, AnnouncesNoSecondDateWhenTheDateIsSetOverMidnight) {
  startAt("2030-06-15T23:30:00");
  service->setDate(20, 6, 2030);
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("date 20.06.2030"));
  EXPECT_THAT(heard(minutes{30}), ElementsAre("time 00:00:00", "date 21.06.2030"));
}

TEST_F(ClockOnWatchedTimers, AnnouncesEachMidnightOnceWhenTheHourComesFirst) {
  startAt("2030-12-30T23:59:59");
  EXPECT_THAT(heard(seconds{1}), ElementsAre("time 00:00:00", "date 31.12.2030"));
  heard(hours{22});
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 23:00:00", "time 00:00:00", "date 01.01.2031"));
}

TEST_F(ClockOnReversedTimers, AnnouncesEachMidnightOnceWhenItComesBeforeTheHour) {
  startAt("2030-12-30T23:59:59");
  EXPECT_THAT(heard(seconds{1}), ElementsAre("date 31.12.2030", "time 00:00:00"));
  heard(hours{22});
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 23:00:00", "date 01.01.2031", "time 00:00:00"));
}

// At start the timers are armed before the zone is installed.
TEST_F(ClockOnWatchedTimers, AnnouncesTheFirstMidnightOfAnotherZone) {
  store.put("TimezoneOffset", "-5");
  startAt("2030-06-15T03:30:00");  // 22:30 on the 14th
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 23:00:00", "time 00:00:00", "date 15.06.2030"));
  store.put("TimezoneOffset", "5");
  startAt("2030-06-15T17:30:00");  // 22:30
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 23:00:00", "time 00:00:00", "date 16.06.2030"));
}

// Zone 9 at +1: 02:00 on 31 March 2030 is followed by 03:00, 03:00 on 27 October by 02:00.
TEST_F(ClockOnWatchedTimers, SkipsAnHourInSpringAndRepeatsOneInAutumn) {
  zone(9, "1");
  startAt("2030-03-30T23:59:59");
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 01:00:00", "time 03:00:00"));
  EXPECT_THAT(heard(hours{20} + seconds{1}).back(), "date 01.04.2030");
  startAt("2030-10-26T23:59:59");
  EXPECT_THAT(heard(hours{3}), ElementsAre("time 02:00:00", "time 02:00:00", "time 03:00:00"));
}

// Zone 5 at -3 changes at midnight: 00:00 on 20 October 2030 becomes 01:00, 00:00 on 17 February
// 2030 becomes 23:00 on the 16th.
TEST_F(ClockOnWatchedTimers, AnnouncesEachDateOnceInBrazil) {
  zone(5, "-3");
  startAt("2030-10-20T01:59:59");
  EXPECT_THAT(heard(hours{1} + seconds{1}),
              ElementsAre("time 23:00:00", "time 01:00:00", "date 20.10.2030"));
  EXPECT_THAT(heard(hours{1}), ElementsAre("time 02:00:00"));
  EXPECT_THAT(heard(hours{22}).back(), "date 21.10.2030");
  startAt("2030-02-17T00:59:59");
  EXPECT_THAT(heard(hours{3}),
              ElementsAre("time 23:00:00", "time 23:00:00", "time 00:00:00", "date 17.02.2030"));
}

TEST_F(ClockOnReversedTimers, AnnouncesEachMidnightInBrazil) {
  zone(5, "-3");
  startAt("2030-10-20T01:59:59");
  EXPECT_THAT(heard(hours{1} + seconds{1}),
              ElementsAre("time 23:00:00", "date 20.10.2030", "time 01:00:00"));
  EXPECT_THAT(heard(hours{1}), ElementsAre("time 02:00:00"));
  startAt("2030-02-17T00:59:59");
  EXPECT_THAT(heard(hours{3}), ElementsAre("time 23:00:00", "date 16.02.2030", "time 23:00:00",
                                           "date 17.02.2030", "time 00:00:00"));
}

}  // namespace
