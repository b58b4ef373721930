// The timers of the clock: what each expiry does, in which order, and what observers hear of hours,
// midnights and changes of the zone.

#include <gmock/gmock.h>

#include "ClockService.h"
#include "ManageableData.h"
#include "plugin/IndependentZones.h"
#include "plugin/JournalObserver.h"
#include "plugin/OrderedTimers.h"
#include "plugin/RecordingServices.h"
#include "plugin/ReportPipe.h"
#include "support/LogCapture.h"
#include "support/ZoneGuard.h"

namespace {

using plugin::OrderedTimers;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

// The timers of a service in order of creation; the last two are replaced with each use.
enum Timer : int { kFallback = 1, kTimeChanged, kDateChanged, kZoneRefresh, kHour, kMidnight };

// A clock whose timers are seen and fired by hand. It starts at 22:10:05 on 15 June 2030, UTC.
class ClockOnWatchedTimers : public testing::Test {
 protected:
  explicit ClockOnWatchedTimers(OrderedTimers::Order order = OrderedTimers::Order::ofCreation)
      : timers(clock, order) {
    host::setProcessClock(&clock);
    timers.add("DataAccessServiceIfc", &store);
    timers.add("PhysicalInterfaceServiceIfc", &physical);
    timers.add("LocalMgmtIfc", &management);
    store.items["FallbackDateTime"] = "2030-06-15T22:10:05+00:00";
  }
  ~ClockOnWatchedTimers() override {
    pipe.release();
    service.reset();
    host::setProcessClock(nullptr);
  }
  ClockOnWatchedTimers(const ClockOnWatchedTimers&) = delete;
  ClockOnWatchedTimers& operator=(const ClockOnWatchedTimers&) = delete;

  void start() {
    service = std::make_unique<ClockService>();
    service->observeTimeEvents(&observer);
    service->initWith(&timers);
    journal.take();
    timers.onCall = [this](const std::string& call) { journal.add(call); };
  }
  void startAt(const std::string& utc) {
    store.items["FallbackDateTime"] = utc + "+00:00";
    start();
  }
  void zone(int id, const std::string& offset) {
    store.items["TimezoneOffset"] = offset;
    store.items["DaylightSavingActive"] = "true";
    store.items["AutoDaylightSavingEnabledDevice"] = "true";
    store.items["DaylightSavingZoneIDDevice"] = std::to_string(id);
  }
  std::vector<std::string> expire(int timer) {
    service->timerEvent(timer);
    return journal.take();
  }
  // What observers hear, and nothing of the framework.
  std::vector<std::string> heard(std::chrono::nanoseconds duration) {
    timers.onCall = nullptr;
    timers.pass(duration);
    std::vector<std::string> events;
    for (const std::string& line : journal.take())
      if (line.rfind("time", 0) == 0 || line.rfind("date", 0) == 0 || line.rfind("zone", 0) == 0)
        events.push_back(line);
    return events;
  }

  plugin::Journal journal;
  const support::ZoneGuard processZone{"UTC0"};
  host::VirtualClock clock;
  OrderedTimers timers;
  plugin::RecordingPhysical physical{journal, 0};
  plugin::RecordingManagement management{journal};
  plugin::RecordingStore store{journal};
  plugin::JournalObserver observer{journal};
  plugin::ReportPipe pipe;
  std::unique_ptr<ClockService> service;
};

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

TEST_F(ClockOnWatchedTimers, HasBothSyncTimersDueInHalfAnHourAtHalfPastEleven) {
  startAt("2030-06-15T23:30:00");
  EXPECT_EQ(timers.periodOf(kHour), milliseconds{1'800'000});
  EXPECT_EQ(timers.periodOf(kMidnight), milliseconds{1'800'000});
}

TEST_F(ClockOnWatchedTimers, WaitsAWholeHourAndAWholeDayOnTheBoundary) {
  startAt("2030-12-31T00:00:00");
  EXPECT_EQ(timers.periodOf(kHour), milliseconds{3'600'000});
  EXPECT_EQ(timers.periodOf(kMidnight), milliseconds{86'400'000});
}

TEST_F(ClockOnWatchedTimers, CrossesTheYearsEnd) {
  startAt("2036-12-31T23:59:59");
  EXPECT_EQ(timers.periodOf(kHour), milliseconds{1000});
  EXPECT_EQ(timers.periodOf(kMidnight), milliseconds{1000});
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

TEST_F(ClockOnWatchedTimers, TakesTheNumberZeroForTheFirstTimerThatCouldNotBeCreated) {
  timers.refuseTimers(0);
  start();
  EXPECT_THAT(expire(0), ElementsAre("store FallbackDateTime=2030-06-15T22:10:05+00:00"));
}

TEST_F(ClockOnWatchedTimers, TellsOfASetTimeWithTheHourThatComesBeforeIt) {
  start();
  service->setTime(10, 0, 0);
  EXPECT_THAT(timers.armed(), testing::Contains(kTimeChanged));
  expire(kHour);
  EXPECT_THAT(timers.armed(), testing::Not(testing::Contains(kTimeChanged)));
}

TEST_F(ClockOnWatchedTimers, NeverHearsOfAnHourTwice) {
  startAt("2030-06-15T22:59:59");
  EXPECT_THAT(heard(seconds{1}), ElementsAre("time 23:00:00"));
  EXPECT_THAT(heard(hours{1} - milliseconds{1}), IsEmpty());
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("time 00:00:00", "date 16.06.2030"));
}

TEST_F(ClockOnWatchedTimers, DoesNotTellObserversOfASecondDateWhenTheDateIsSetOverMidnight) {
  startAt("2030-06-15T22:30:00");
  service->setDate(20, 6, 2030);
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("date 20.06.2030"));
  EXPECT_THAT(heard(hours{1} + minutes{30}),
              ElementsAre("time 23:00:00", "time 00:00:00", "date 21.06.2030"));
}

// The same clock on a framework that delivers equal expiries in the other order.
class ClockOnReversedTimers : public ClockOnWatchedTimers {
 protected:
  ClockOnReversedTimers() : ClockOnWatchedTimers(OrderedTimers::Order::reversed) {}
};

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

// The timers are armed before the zone is known: the first days must be right all the same.
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

// Zone 9 at +1: 02:00 on 31 March 2030 is followed by 03:00, 03:00 on 27 October by 02:00.
TEST_F(ClockOnWatchedTimers, SkipsAnHourInSpring) {
  zone(9, "1");
  startAt("2030-03-30T23:59:59");
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 01:00:00", "time 03:00:00"));
  EXPECT_THAT(heard(hours{20} + seconds{1}).back(), "date 01.04.2030");
}

TEST_F(ClockOnWatchedTimers, RepeatsAnHourInAutumn) {
  zone(9, "1");
  startAt("2030-10-26T23:59:59");
  EXPECT_THAT(heard(hours{3}), ElementsAre("time 02:00:00", "time 02:00:00", "time 03:00:00"));
}

// Zone 5 at -3, at midnight: 00:00 on 20 October 2030 is 01:00, 00:00 on 17 February 2030 is 23:00
// on the 16th again.
class ClockInBrazil : public ClockOnWatchedTimers {
 protected:
  explicit ClockInBrazil(OrderedTimers::Order order = OrderedTimers::Order::ofCreation)
      : ClockOnWatchedTimers(order) {
    zone(5, "-3");
  }
};
class ClockInBrazilOnReversedTimers : public ClockInBrazil {
 protected:
  ClockInBrazilOnReversedTimers() : ClockInBrazil(OrderedTimers::Order::reversed) {}
};

TEST_F(ClockInBrazil, AnnouncesTheDayThatBeginsAtOne) {
  startAt("2030-10-20T01:59:59");
  EXPECT_THAT(heard(hours{1} + seconds{1}),
              ElementsAre("time 23:00:00", "time 01:00:00", "date 20.10.2030"));
  EXPECT_THAT(heard(hours{1}), ElementsAre("time 02:00:00"));
  EXPECT_THAT(heard(hours{22}).back(), "date 21.10.2030");
}

TEST_F(ClockInBrazilOnReversedTimers, AnnouncesTheDayThatBeginsAtOne) {
  startAt("2030-10-20T01:59:59");
  EXPECT_THAT(heard(hours{1} + seconds{1}),
              ElementsAre("time 23:00:00", "date 20.10.2030", "time 01:00:00"));
  EXPECT_THAT(heard(hours{1}), ElementsAre("time 02:00:00"));
}

TEST_F(ClockInBrazil, AnnouncesTheRealMidnightAfterTheRepeatedHour) {
  startAt("2030-02-17T00:59:59");
  EXPECT_THAT(heard(hours{3}),
              ElementsAre("time 23:00:00", "time 23:00:00", "time 00:00:00", "date 17.02.2030"));
}

TEST_F(ClockInBrazilOnReversedTimers, AnnouncesTheRealMidnightAfterTheRepeatedHour) {
  startAt("2030-02-17T00:59:59");
  EXPECT_THAT(heard(hours{3}), ElementsAre("time 23:00:00", "date 16.02.2030", "time 23:00:00",
                                           "date 17.02.2030", "time 00:00:00"));
}

}  // namespace
