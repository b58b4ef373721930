// What each expiry of a timer does: calls to the framework, events and log lines, in order.

#include <gmock/gmock.h>

#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include "plugin/ClockOnWatchedTimers.h"
#include "support/LogCapture.h"

namespace {

using namespace plugin;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Lines = std::vector<std::string>;

const std::string kNow = "2030-06-15T22:10:05+00:00";
const std::string kStored = "store FallbackDateTime=" + kNow;
const std::string kSaved = "6 setFallbackTime: \"" + kNow + "\"";
const Lines kArmsHour{"5 setTimeSyncTimer -> setting timer", "cancel 5", "delete 5",
                      "create 2995000 -> 7", "start 7"};
const Lines kArmsMidnight{"5 setTimeSyncTimer -> setting date timer", "cancel 6", "delete 6",
                          "create 6595000 -> 8", "start 8"};
const Lines kArmsMidnightAlone{"5 setTimeSyncTimer -> setting date timer", "cancel 6", "delete 6",
                               "create 6595000 -> 7", "start 7"};

// The line that names the saved time.
std::string names(const char* place) {
  return "5 " + std::string(place) + " FallbackTime is \"" + kNow + "\"";
}

Lines joined(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

// A clock that has started. Its log lines stand in the journal, between its calls and events.
class ClockWithLoggedTimers : public ClockOnWatchedTimers {
 protected:
  ClockWithLoggedTimers() { start(); }

 private:
  const support::LogCapture m_log{
      6, [this](const host::LogEntry& entry) {
        if (entry.text.rfind("getTimeInternal", 0) == 0 || entry.text.rfind("NTP", 0) == 0) return;
        journal.add(std::to_string(entry.level) + " " + entry.text);
      }};
};

TEST_F(ClockWithLoggedTimers, FallbackSavesTheTimeAndStartsAgain) {
  EXPECT_THAT(expire(kFallback),
              ElementsAre(kStored, kSaved, names("timerEvent(m_fallbackTimeUpdateTimer):"),
                          "stop 1", "start 1"));
}

TEST_F(ClockWithLoggedTimers, ZoneRefreshInstallsTheZoneThenAnnouncesThenArms) {
  const Lines announces{"stop 4", "zone LOC00:00", "time 22:10:05", "date 15.06.2030"};
  EXPECT_EQ(expire(kZoneRefresh), joined({announces, kArmsHour, kArmsMidnight}));
}

TEST_F(ClockWithLoggedTimers, SetTimeSavesAnnouncesTheDateAndStepsTheHour) {
  const Lines announces{
      kStored,  kSaved,   "date 15.06.2030", names("timerEvent(m_timeChangedTimer):"),
      "stop 2", "stop 5", "start 5",         "time 22:10:05"};
  EXPECT_EQ(expire(kTimeChanged), joined({announces, kArmsHour, kArmsMidnight}));
}

TEST_F(ClockWithLoggedTimers, SetDateSavesArmsAndAnnounces) {
  const Lines saves{kStored, kSaved, names("timerEvent(m_dateChangedTimer)"), "stop 3"};
  EXPECT_EQ(expire(kDateChanged), joined({saves, kArmsMidnightAlone, {"date 15.06.2030"}}));
}

TEST_F(ClockWithLoggedTimers, MidnightDropsASetDateArmsAndAnnounces) {
  EXPECT_EQ(expire(kMidnight), joined({{"stop 3"}, kArmsMidnightAlone, {"date 15.06.2030"}}));
}

// The hour also replaces a set time that is pending, and schedules one restart of the NTP client.
TEST_F(ClockWithLoggedTimers, HourStepsAndSchedulesARestart) {
  management.setValue("mac-addr", "0001E3A1B2C3");
  const Lines announces{"stop 2", "stop 5", "start 5", "time 22:10:05"};
  const Lines hour = joined({announces, kArmsHour, kArmsMidnight});
  const Lines first = expire(kHour);
  ASSERT_GT(first.size(), hour.size());
  const auto restart = static_cast<std::ptrdiff_t>(hour.size());
  EXPECT_EQ(Lines(first.begin(), first.begin() + restart), hour);
  EXPECT_THAT(
      Lines(first.begin() + restart, first.end()),
      ElementsAre("read mac-addr", "5 mac address is 0001E3A1B2C3", "5 seeding with 10597059",
                  StartsWith("5 rand delay 600 + "), StartsWith("create "), "start 9"));
  const Lines second = expire(7);
  EXPECT_THAT(Lines(second.begin() + restart, second.end()),
              ElementsAre("cancel 9", "delete 9", StartsWith("5 rand delay 600 + "),
                          StartsWith("create "), "start 12"));
  EXPECT_THAT(expire(12), ElementsAre("5 start NTP client", "5 Network not up"));
}

TEST_F(ClockWithLoggedTimers, OtherTimerDoesNothing) {
  for (const int other : {-1, 7, 1000}) EXPECT_THAT(expire(other), IsEmpty()) << other;
}

TEST_F(ClockWithLoggedTimers, ReportAnnouncesRestartsTheFallbackTimerAndSaves) {
  service->handleSNTPClientUpdate(1);
  EXPECT_THAT(journal.take(),
              ElementsAre("5 sntpTimeChanged: handling SNTP client update", "begin clock change",
                          "time 22:10:05", "end clock change", "date 15.06.2030", "stop 1",
                          "start 1", kStored, kSaved, names("sntpTimeChanged:")));
}

TEST_F(ClockOnWatchedTimers, ArmsTheNextHourAndTheNextMidnightOnly) {
  start();
  EXPECT_THAT(timers.armed(), ElementsAre(kFallback, kHour, kMidnight));
  EXPECT_EQ(timers.dueIn(kFallback), hours{12});
  EXPECT_EQ(timers.dueIn(kHour), minutes{50} - seconds{5});
  EXPECT_EQ(timers.dueIn(kMidnight), hours{1} + minutes{50} - seconds{5});
  for (const int timer : {kTimeChanged, kDateChanged, kZoneRefresh})
    EXPECT_EQ(timers.periodOf(timer), milliseconds{1});
}

TEST_F(ClockOnWatchedTimers, ReplacesATimerWhoseIdIsOne) {
  constexpr int kTimersBefore = kHour - 1;
  timers.refuseFirst(kTimersBefore);
  start();
  EXPECT_THAT(expire(kHour - kTimersBefore), testing::IsSupersetOf({"cancel 1", "delete 1"}));
}

// The time that cancelling and deleting take is not part of the delay.
TEST_F(ClockOnWatchedTimers, ComputesTheDelayOfASyncTimerAfterDeletingTheOldOne) {
  start();
  timers.onCall = [this](const std::string& call) {
    journal.add(call);
    if (call.rfind("delete", 0) == 0) clock.advance(seconds{10});
  };
  EXPECT_THAT(expire(kTimeChanged),
              testing::IsSupersetOf({"create 2985000 -> 7", "create 6575000 -> 8"}));
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

}  // namespace
