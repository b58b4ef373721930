// The timers of the clock: what each expiry does, in which order, and what observers hear of hours,
// midnights and changes of the zone.

#include <gmock/gmock.h>

#include <cstdlib>

#include "plugin/ClockOnWatchedTimers.h"
#include "support/LogCapture.h"

namespace {

using namespace plugin;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ClockOnWatchedTimers, ArmsTheNextHourAndTheNextMidnightOnly) {
  start();
  EXPECT_THAT(timers.armed(), ElementsAre(kFallback, kHour, kMidnight));
  EXPECT_EQ(timers.dueIn(kFallback), hours{12});
  EXPECT_EQ(timers.dueIn(kHour), minutes{50} - seconds{5});
  EXPECT_EQ(timers.dueIn(kMidnight), hours{1} + minutes{50} - seconds{5});
  EXPECT_EQ(timers.periodOf(kTimeChanged), milliseconds{1});
  EXPECT_EQ(timers.periodOf(kDateChanged), milliseconds{1});
  EXPECT_EQ(timers.periodOf(kZoneRefresh), milliseconds{1});
}

TEST_F(ClockOnWatchedTimers, SavesTheTimeAndStartsAgainWhenTheFallbackTimerExpires) {
  start();
  EXPECT_THAT(expire(kFallback),
              ElementsAre("store FallbackDateTime=2030-06-15T22:10:05+00:00", "stop 1", "start 1"));
}

TEST_F(ClockOnWatchedTimers, RecomputesTheZoneThenTellsThenArmsWhenTheRefreshExpires) {
  start();
  EXPECT_THAT(expire(kZoneRefresh),
              ElementsAre("stop 4", "zone LOC00:00", "time 22:10:05", "date 15.06.2030", "cancel 5",
                          "delete 5", "create 2995000 -> 7", "start 7", "cancel 6", "delete 6",
                          "create 6595000 -> 8", "start 8"));
}

TEST_F(ClockOnWatchedTimers, SavesTellsTheDateAndStepsTheHourWhenATimeWasSet) {
  start();
  EXPECT_THAT(expire(kTimeChanged),
              ElementsAre("store FallbackDateTime=2030-06-15T22:10:05+00:00", "date 15.06.2030",
                          "stop 2", "stop 5", "start 5", "time 22:10:05", "cancel 5", "delete 5",
                          "create 2995000 -> 7", "start 7", "cancel 6", "delete 6",
                          "create 6595000 -> 8", "start 8"));
}

TEST_F(ClockOnWatchedTimers, StepsTheHourAndSchedulesOneRestartWhenTheHourExpires) {
  start();
  timers.pass(minutes{49});
  journal.take();
  const support::LogCapture log(5);
  const auto lines = expire(kHour);
  ASSERT_EQ(lines.size(), 15U);
  EXPECT_THAT(std::vector(lines.begin(), lines.begin() + 13),
              ElementsAre("stop 2", "stop 5", "start 5", "time 22:59:05", "cancel 5", "delete 5",
                          "create 55000 -> 7", "start 7", "cancel 6", "delete 6",
                          "create 3655000 -> 8", "start 8", "read mac-addr"));
  EXPECT_EQ(lines[13].substr(0, 7), "create ");
  EXPECT_EQ(lines[14], "start 9");
  EXPECT_TRUE(log.has(5, "setTimeSyncTimer -> setting timer"));
  EXPECT_TRUE(log.has(5, "setTimeSyncTimer -> setting date timer"));
}

TEST_F(ClockOnWatchedTimers, SavesArmsAndTellsWhenADateWasSet) {
  start();
  EXPECT_THAT(expire(kDateChanged),
              ElementsAre("store FallbackDateTime=2030-06-15T22:10:05+00:00", "stop 3", "cancel 6",
                          "delete 6", "create 6595000 -> 7", "start 7", "date 15.06.2030"));
}

TEST_F(ClockOnWatchedTimers, ArmsAndTellsAndDropsASetDateWhenMidnightExpires) {
  start();
  EXPECT_THAT(expire(kMidnight), ElementsAre("stop 3", "cancel 6", "delete 6",
                                             "create 6595000 -> 7", "start 7", "date 15.06.2030"));
}

TEST_F(ClockOnWatchedTimers, TriesTheNtpClientWhenTheRestartExpires) {
  start();
  expire(kHour);
  const support::LogCapture log(5);
  EXPECT_THAT(expire(9), IsEmpty());
  EXPECT_TRUE(log.has(5, "start NTP client"));
}

TEST_F(ClockOnWatchedTimers, IgnoresAnyOtherTimer) {
  start();
  for (const int other : {0, -1, 7, 1000}) EXPECT_THAT(expire(other), IsEmpty()) << other;
}

TEST_F(ClockOnWatchedTimers, ReplacesATimerWhoseIdIsOne) {
  constexpr int kTimersBefore = kHour - 1;
  timers.refuseFirst(kTimersBefore);
  start();
  const auto calls = expire(kHour - kTimersBefore);
  EXPECT_THAT(calls, testing::IsSupersetOf({"cancel 1", "delete 1"}));
}

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

TEST_F(ClockOnWatchedTimers, AnnouncesASetTimeAtAnHourThatComesFirst) {
  start();
  service->setTime(10, 0, 0);
  EXPECT_THAT(timers.armed(), testing::Contains(kTimeChanged));
  expire(kHour);
  EXPECT_THAT(timers.armed(), testing::Not(testing::Contains(kTimeChanged)));
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
  EXPECT_THAT(heard(minutes{39}), IsEmpty());  // the hour that was ahead is so no longer
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

// The time that cancelling and deleting take is not part of the delay.
TEST_F(ClockOnWatchedTimers, ComputesTheDelayOfASyncTimerAfterDeletingTheOldOne) {
  start();
  timers.onCall = [this](const std::string& call) {
    journal.add(call);
    if (call.rfind("delete", 0) == 0) clock.advance(seconds{10});
  };
  const auto calls = expire(kTimeChanged);
  EXPECT_THAT(calls, testing::IsSupersetOf({"create 2985000 -> 7", "create 6575000 -> 8"}));
}

TEST_F(ClockOnWatchedTimers, DrawsTheDelayOfARestartAfterDeletingTheOldTimer) {
  start();
  expire(kHour);
  constexpr int kNextHour = 7, kRestart = 9;
  const support::LogCapture log(5);
  timers.onCall = [&](const std::string& call) {
    if (call != "delete " + std::to_string(kRestart)) return;
    EXPECT_FALSE(log.hasPart("rand delay"));
    std::srand(1);
  };
  expire(kNextHour);
  std::srand(1);
  const int next = static_cast<int>(std::rand() * 600.0 / 2147483648.0) + 1;
  EXPECT_TRUE(log.hasPart("rand delay 600 + " + std::to_string(next) + " "));
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

// The timers are armed before the zone is installed; the first midnights are right all the same.
TEST_F(ClockOnWatchedTimers, AnnouncesTheFirstMidnightWestOfTheZoneItStartedIn) {
  store.items["TimezoneOffset"] = "-5";
  startAt("2030-06-15T03:30:00");  // 22:30 on the 14th
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 23:00:00", "time 00:00:00", "date 15.06.2030"));
}

TEST_F(ClockOnWatchedTimers, AnnouncesTheFirstMidnightEastOfTheZoneItStartedIn) {
  store.items["TimezoneOffset"] = "5";
  startAt("2030-06-15T17:30:00");  // 22:30
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 23:00:00", "time 00:00:00", "date 16.06.2030"));
}

}  // namespace
