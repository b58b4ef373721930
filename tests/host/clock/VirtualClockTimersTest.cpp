#include <gtest/gtest.h>

#include <chrono>

#include "ClockUnderTest.h"
#include "clock/VirtualClock.h"

namespace {

using namespace std::chrono_literals;
using host::VirtualClock;

using PausedClock = ClockUnderTest;

TEST_F(PausedClock, NumbersTimersFromOneWithoutReuse) {
  EXPECT_EQ(timer(1s), 1);
  EXPECT_EQ(timer(1s), 2);
  m_clock.deleteTimer(2);
  EXPECT_EQ(timer(1s), 3);
}

TEST_F(PausedClock, CreatesNoTimerWithANegativePeriod) {
  EXPECT_EQ(timer(-1ns), 0);
  EXPECT_EQ(timer(0ns), 1);
}

TEST_F(PausedClock, DeliversOnceAtTheEndOfThePeriod) {
  const int id = startedTimer(1500ms);
  m_clock.advance(1500ms - 1ns);
  EXPECT_EQ(expiredIds(), Ids{});
  m_clock.advance(1ns);
  EXPECT_EQ(m_expiries, (Expiries{{id, 1500ms}}));
  m_clock.advance(10s);
  EXPECT_EQ(m_expiries.size(), 1U);
  EXPECT_EQ(m_clock.armedTimers(), 0U);
}

TEST_F(PausedClock, KnowsThisThreadsFirstAct) {
  VirtualClock::forgetActs();
  EXPECT_EQ(VirtualClock::firstAct(), std::nullopt);
  m_clock.advance(2s);
  startedTimer(1s);
  m_clock.advance(500ms);
  EXPECT_TRUE(m_clock.setWall(90s));
  EXPECT_EQ(VirtualClock::firstAct(), 2s);
}

// Time stands at a timer that the framework thread has yet to deliver.
TEST_F(PausedClock, AnActAtATimerThatIsDueIsBeforeItInTheSameSecond) {
  startedTimer(1500ms);
  m_clock.setSpeed(1);
  passRealTime(2s);
  EXPECT_TRUE(m_clock.reading().due);
  EXPECT_EQ(m_clock.reading().moment(), 1500ms - 10us);
  VirtualClock::forgetActs();
  EXPECT_TRUE(m_clock.setWall(90s));
  EXPECT_EQ(VirtualClock::firstAct(), 1500ms - 10us);
  EXPECT_EQ(m_clock.runDue(1), 1U);
  EXPECT_FALSE(m_clock.reading().due);
  startedTimer(1s);
  passRealTime(2s);
  EXPECT_TRUE(m_clock.reading().due);
  EXPECT_EQ(m_clock.reading().moment(), 3s);
}

TEST_F(PausedClock, DropsADueExpiryThatAnOwnerDisarms) {
  const int first = startedTimer(10s);
  const int stopped = startedTimer(10s);
  const int cancelled = startedTimer(10s);
  const int deleted = startedTimer(10s);
  m_onExpiry = [&](int /*timer*/) {
    m_clock.stopTimer(stopped);
    m_clock.cancelTimer(cancelled);
    m_clock.deleteTimer(deleted);
  };
  m_clock.advance(1h);
  EXPECT_EQ(expiredIds(), Ids{first});
}

TEST_F(PausedClock, NeverDeliversAfterTheLastUptime) {
  m_clock.advance(VirtualClock::kLastUptime - 10s);
  startedTimer(10s + 1ns);
  EXPECT_EQ(m_clock.nextExpiry(), std::nullopt);
  const int id = startedTimer(10s);
  m_onExpiry = [&](int timer) { m_clock.startTimer(timer); };
  m_clock.advance(Nanoseconds::max());
  EXPECT_EQ(expiredIds(), Ids{id});
}

TEST_F(PausedClock, NeverArmsATimerThatWouldExpireAfterTheLastUptime) {
  startedTimer(Nanoseconds::max());
  EXPECT_EQ(m_clock.armedTimers(), 0U);
}

TEST_F(PausedClock, CallsTheListenerWhenTheEarliestExpiryChanges) {
  int calls = 0;
  m_clock.onScheduleChange([&] {
    ++calls;
    static_cast<void>(m_clock.nextExpiry());  // no lock is held
  });
  const int id = startedTimer(10s);
  EXPECT_EQ(calls, 1);
  const int later = startedTimer(20s);
  EXPECT_EQ(calls, 1) << "a later one changes nothing";
  m_clock.stopTimer(later);
  EXPECT_EQ(calls, 1);
  m_clock.deleteTimer(id);
  EXPECT_EQ(calls, 2);
}

TEST_F(PausedClock, CallsTheListenerWhenTheSpeedOrTheTimeChanges) {
  int calls = 0;
  startedTimer(10s);
  m_clock.onScheduleChange([&] { ++calls; });
  m_clock.setSpeed(2);
  EXPECT_EQ(calls, 1);
  m_clock.setSpeed(0);
  m_clock.advance(1s);
  EXPECT_EQ(calls, 3);
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(calls, 4);
  m_clock.onScheduleChange({});
  startedTimer(1s);
  EXPECT_EQ(calls, 4);
}

TEST_F(PausedClock, DoesNotCallTheListenerFromRunDue) {
  int calls = 0;
  startedTimer(0s);
  m_onExpiry = [&](int /*timer*/) { startedTimer(1s); };
  m_clock.onScheduleChange([&] { ++calls; });
  EXPECT_EQ(m_clock.runDue(9), 1U);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(m_clock.nextExpiry(), Nanoseconds{1s});
}

}  // namespace
