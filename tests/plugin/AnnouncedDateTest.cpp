// Each change of the local date is announced once, within an hour, whether NTP, another program, a
// user or time itself changed it.

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <functional>
#include <random>
#include <utility>

#include "plugin/ClockOnWatchedTimers.h"
#include "support/UtcInstant.h"
#include "support/WaitingCall.h"

namespace {

std::function<void()> g_onSystemSet;

}  // namespace

// The linker replaces votk_set_time_seconds_since_epoch, whose mangled name this is.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
int __real__Z33votk_set_time_seconds_since_epochm(unsigned long secondsSinceEpoch);
int __wrap__Z33votk_set_time_seconds_since_epochm(unsigned long secondsSinceEpoch);

int __wrap__Z33votk_set_time_seconds_since_epochm(unsigned long secondsSinceEpoch) {
  const int result = __real__Z33votk_set_time_seconds_since_epochm(secondsSinceEpoch);
  if (g_onSystemSet) g_onSystemSet();
  return result;
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using namespace plugin;
using testing::ElementsAre;

// A clock on watched timers that is moved in June 2030, UTC.
class ClockThatIsMoved : public ClockOnWatchedTimers {
 protected:
  // Another program sets the system's clock.
  void move(int day, int hour, int minute, int second) {
    const time_t utc = support::utcInstant(2030, 6, day, hour, minute, second);
    ASSERT_TRUE(clock.setWall(seconds{utc}));
  }
  // The NTP client sets the system's clock and reports.
  void report(int day, int hour, int minute, int second) {
    move(day, hour, minute, second);
    service->handleSNTPClientUpdate(1);
  }
  // Time passes while the event with this number, counted from 0, is delivered.
  void passInEvent(int number, std::chrono::nanoseconds duration) {
    observer.onEvent = [this, left = number, duration]() mutable {
      if (left-- == 0) clock.advance(duration);
    };
  }
};

TEST_F(ClockThatIsMoved, AnnouncesAMidnightAgainAfterAReportMovedTheClockBack) {
  startAt("2030-06-07T23:59:55");
  EXPECT_THAT(heard(seconds{8}), ElementsAre("time 00:00:00", "date 08.06.2030"));
  report(7, 23, 59, 58);  // it was five seconds fast
  EXPECT_THAT(heard(hours{1}),
              ElementsAre("time 23:59:58", "date 07.06.2030", "time 00:59:55", "date 08.06.2030"));
  EXPECT_THAT(heard(minutes{60}), ElementsAre("time 01:00:00"));
}

TEST_F(ClockThatIsMoved, AnnouncesBothDatesWhenAnotherProgramMovesItBackOverMidnight) {
  startAt("2030-06-07T23:59:55");
  heard(minutes{30});
  move(7, 23, 20, 0);
  EXPECT_THAT(heard(hours{1}),
              ElementsAre("time 23:50:05", "date 07.06.2030", "time 00:00:00", "date 08.06.2030"));
}

TEST_F(ClockThatIsMoved, AnnouncesADateSetByAnotherProgramOnce) {
  startAt("2030-06-07T10:30:00");
  move(20, 10, 40, 0);
  EXPECT_THAT(heard(hours{2}), ElementsAre("time 11:10:00", "date 20.06.2030", "time 12:00:00"));
}

TEST_F(ClockThatIsMoved, AnnouncesADateSetByAReportOnce) {
  startAt("2030-06-07T23:30:00");
  report(8, 0, 10, 0);
  EXPECT_THAT(heard(hours{1}),
              ElementsAre("time 00:10:00", "date 08.06.2030", "time 00:40:00", "time 01:00:00"));
}

TEST_F(ClockThatIsMoved, AnnouncesASetDateOnceWhenTheHourComesFirst) {
  startAt("2030-06-07T22:59:59");
  heard(seconds{1} - microseconds{500});
  service->setDate(20, 6, 2030);
  EXPECT_THAT(heard(microseconds{500}), ElementsAre("time 23:00:00"));
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("date 20.06.2030"));
  EXPECT_THAT(heard(hours{1}), ElementsAre("time 00:00:00", "date 21.06.2030"));
}

// The hour sees the new date before the setter has started the timer that announces it.
TEST_F(ClockThatIsMoved, AnnouncesASetDateOnceWhenTheHourComesWhileItIsSet) {
  startAt("2030-06-07T22:30:00");
  g_onSystemSet = [this] { service->timerEvent(kHour); };
  service->setDate(20, 6, 2030);
  g_onSystemSet = nullptr;
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("time 22:30:00", "date 20.06.2030"));
}

TEST_F(ClockThatIsMoved, AnnouncesASetDateOnceWhenItsTimerIsStoppedByTheMidnight) {
  startAt("2030-06-07T22:59:59");
  service->setDate(20, 6, 2030);
  EXPECT_THAT(expire(kMidnight), testing::Contains("date 20.06.2030"));
  EXPECT_THAT(heard(seconds{1}), ElementsAre("time 23:00:00"));
  EXPECT_THAT(heard(hours{1}), ElementsAre("time 00:00:00", "date 21.06.2030"));
}

// A time past midnight changes the date. The hour replaces the pending event and announces both.
TEST_F(ClockThatIsMoved, AnnouncesTheDateWhenTheHourReplacesTheEventOfASetTime) {
  startAt("2030-06-07T22:59:59");
  heard(seconds{1} - microseconds{500});
  service->setTime(25, 0, 0);
  EXPECT_THAT(heard(milliseconds{2}), ElementsAre("time 01:00:01", "date 08.06.2030"));
}

TEST_F(ClockThatIsMoved, AnnouncesASetDateAtTheHourWithoutADateTimer) {
  timers.refuseFirst(kDateChanged);
  startAt("2030-06-07T22:30:00");
  service->setDate(20, 6, 2030);
  EXPECT_THAT(heard(minutes{30}), ElementsAre("time 23:00:00", "date 20.06.2030"));
}

// The first valid id is 1.
TEST_F(ClockThatIsMoved, AnnouncesASetDateOnceWhenTheDateTimerHasIdOne) {
  timers.refuseFirst(kDateChanged - 1);
  startAt("2030-06-07T22:59:59");
  service->setDate(20, 6, 2030);
  EXPECT_THAT(expire(kHour - (kDateChanged - 1)),
              testing::Not(testing::Contains("date 20.06.2030")));
  EXPECT_THAT(heard(milliseconds{1}), ElementsAre("date 20.06.2030"));
}

// The date is read before midnight, and both sync timers are armed after it.
TEST_F(ClockThatIsMoved, AnnouncesAMidnightThatPassesDuringAnExpiry) {
  for (const auto& [timer, events] : {std::pair{kTimeChanged, 1}, {kZoneRefresh, 2}}) {
    startAt("2030-06-07T23:59:59");
    passInEvent(events, seconds{1});
    EXPECT_THAT(expire(timer), testing::Contains("date 07.06.2030"));
    EXPECT_THAT(heard(hours{1}), ElementsAre("time 01:00:00", "date 08.06.2030"));
  }
}

TEST_F(ClockThatIsMoved, AnnouncesAMidnightThatPassesDuringItsStart) {
  passInEvent(0, seconds{1});
  startAt("2030-06-07T23:59:59");
  EXPECT_THAT(heard(seconds{1}), ElementsAre("time 00:00:00", "date 08.06.2030"));
}

TEST_F(ClockThatIsMoved, AnnouncesNoDateAtTheFirstHourOfTheDayOfItsStart) {
  startAt("2030-06-07T00:00:00");
  EXPECT_THAT(heard(hours{1}), ElementsAre("time 01:00:00"));
}

// Dates count as announced even without observers: a new observer asks for the date itself.
TEST_F(ClockThatIsMoved, NotifiesALateObserverOfLaterChangesOnly) {
  startAt("2030-06-07T23:30:00");
  service->unobserveTimeEvents(&observer);
  report(8, 0, 10, 0);
  service->observeTimeEvents(&observer);
  EXPECT_THAT(heard(minutes{30}), ElementsAre("time 00:40:00"));
}

// A clock that is moved in every way, in a random order with a fixed seed.
class ClockThatIsMovedAtRandom : public ClockThatIsMoved {
 protected:
  int between(int first, int last) {
    return std::uniform_int_distribution<int>(first, last)(m_random);
  }
  void moveAtRandom() {
    const int day = between(5, 9), hour = between(0, 2) * 23 / 2, minute = between(0, 59);
    switch (between(0, 3)) {
      case 0:
        return move(day, hour, minute, 59);
      case 1:
        return report(day, hour, minute, 59);
      case 2:
        return static_cast<void>(service->handleSNTPClientUpdate(1));
      default:
        return service->timerEvent(kZoneRefresh);
    }
  }
  void listen(std::chrono::nanoseconds duration) {
    for (const std::string& line : heard(duration))
      if (line.rfind("date", 0) == 0) m_heard = line;
  }
  [[nodiscard]] std::string today() const {
    int day = 0, month = 0, year = 0;
    service->getDate(day, month, year);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "date %02d.%02d.%04d", day, month, year);
    return text.data();
  }

  std::string m_heard = "date 07.06.2030";

 private:
  std::mt19937 m_random{20300607};
};

// Only the last rounds set dates: after that the clock no longer follows the system's.
TEST_F(ClockThatIsMovedAtRandom, HasAnnouncedTheDateAfterAnHourWithoutMoves) {
  startAt("2030-06-07T12:00:00");
  for (int i = 0; i < 2000; ++i) {
    for (int moves = between(1, 4); moves > 0; --moves) {
      moveAtRandom();
      if (i >= 1500 && between(0, 9) == 0) service->setDate(between(5, 9), 6, 2030);
      listen(seconds{between(0, 4000)} + microseconds{between(0, 999'999)});
    }
    listen(hours{1});
    ASSERT_EQ(m_heard, today()) << i;
  }
}

// The service reads the time at the expiry, before it waits for the observers' lock.
TEST_F(ClockThatIsMoved, AnnouncesTheTimeOfTheExpiryEvenIfALockDelaysIt) {
  startAt("2030-06-07T22:30:00");
  timers.onCall = nullptr;
  std::unique_ptr<support::WaitingCall> hour;
  bool begun = false;  // under the observers' lock, which the hour's thread has for its events
  observer.onEvent = [&] {
    if (std::exchange(begun, true)) return;
    hour = std::make_unique<support::WaitingCall>([this] { service->timerEvent(kHour); });
    EXPECT_TRUE(hour->waits());
    clock.advance(seconds{10});
  };
  service->timerEvent(kZoneRefresh);
  hour.reset();
  EXPECT_THAT(heard({}), testing::IsSupersetOf({"time 22:30:00", "time 22:30:10"}));
}

// The listener is in the middle of announcing the new date when the hour comes.
TEST_F(ClockThatIsMoved, AnnouncesADateOnceWhenReportAndHourCoincide) {
  startAt("2030-06-07T23:30:00");
  timers.onCall = nullptr;
  std::unique_ptr<support::WaitingCall> hour;
  int events = 0;
  observer.onEvent = [&] {
    if (++events != 2) return;
    hour = std::make_unique<support::WaitingCall>([this] { service->timerEvent(kHour); });
    EXPECT_TRUE(hour->waits());
  };
  report(8, 0, 0, 0);
  hour.reset();
  EXPECT_THAT(heard({}), ElementsAre("time 00:00:00", "date 08.06.2030", "time 00:00:00"));
}

}  // namespace
