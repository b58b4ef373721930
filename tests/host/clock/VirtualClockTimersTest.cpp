#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

#include "SteppedTime.h"
#include "TimerOwner.h"
#include "clock/VirtualClock.h"

namespace {

using namespace std::chrono_literals;
using host::VirtualClock;
using Ids = std::vector<int>;
using Nanoseconds = VirtualClock::Nanoseconds;

class PausedClock : public testing::Test {
 protected:
  VirtualClock m_clock;
  TimerOwner m_owner{m_clock};

  int timer(Nanoseconds period) { return m_clock.createTimer(m_owner, period); }
  int startedTimer(Nanoseconds period) {
    const int id = timer(period);
    m_clock.startTimer(id);
    return id;
  }
};

TEST_F(PausedClock, NumbersTimersFromOneAndNeverReusesANumber) {
  EXPECT_EQ(timer(1s), 1);
  EXPECT_EQ(timer(1s), 2);
  m_clock.deleteTimer(2);
  EXPECT_EQ(timer(1s), 3);
}

TEST_F(PausedClock, CreatesNoTimerWithANegativePeriod) {
  EXPECT_EQ(timer(-1ns), 0);
  EXPECT_EQ(timer(0ns), 1);
}

TEST_F(PausedClock, DoesNotArmATimerByCreatingIt) {
  timer(1s);
  EXPECT_EQ(m_clock.armedTimers(), 0U);
  EXPECT_EQ(m_clock.nextExpiry(), std::nullopt);
  m_clock.advance(2s);
  EXPECT_EQ(m_owner.ids(), Ids{});
}

TEST_F(PausedClock, FiresOnceAtTheEndOfThePeriod) {
  const int id = startedTimer(1500ms);
  m_clock.advance(1500ms - 1ns);
  EXPECT_EQ(m_owner.ids(), Ids{});
  m_clock.advance(1ns);
  EXPECT_EQ(m_owner.notes, (std::vector<TimerOwner::Note>{{id, 1500ms}}));
  m_clock.advance(10s);
  EXPECT_EQ(m_owner.notes.size(), 1U);
  EXPECT_EQ(m_clock.armedTimers(), 0U);
}

TEST_F(PausedClock, StartsAgainForAFullPeriod) {
  const int id = startedTimer(10s);
  m_clock.advance(9s);
  m_clock.startTimer(id);
  EXPECT_EQ(m_clock.armedTimers(), 1U);
  EXPECT_EQ(m_clock.nextExpiry(), Nanoseconds{19s});
}

TEST_F(PausedClock, StartsAgainAfterItsExpiry) {
  const int id = startedTimer(10s);
  m_clock.advance(10s);
  m_clock.startTimer(id);
  m_clock.advance(10s);
  EXPECT_EQ(m_owner.ids(), (Ids{id, id}));
}

TEST_F(PausedClock, StopsAndStartsAgain) {
  const int id = startedTimer(10s);
  m_clock.advance(4s);
  m_clock.stopTimer(id);
  m_clock.advance(100s);
  EXPECT_EQ(m_owner.ids(), Ids{});
  m_clock.startTimer(id);
  EXPECT_EQ(m_clock.nextExpiry(), Nanoseconds{114s});
}

TEST_F(PausedClock, CancelsAndStartsAgain) {
  const int id = startedTimer(10s);
  m_clock.cancelTimer(id);
  EXPECT_EQ(m_clock.armedTimers(), 0U);
  m_clock.startTimer(id);
  EXPECT_EQ(m_clock.armedTimers(), 1U);
}

TEST_F(PausedClock, ForgetsADeletedTimer) {
  const int id = startedTimer(10s);
  m_clock.deleteTimer(id);
  m_clock.startTimer(id);
  m_clock.stopTimer(id);
  m_clock.cancelTimer(id);
  m_clock.deleteTimer(id);
  EXPECT_EQ(m_clock.armedTimers(), 0U);
  m_clock.advance(20s);
  EXPECT_EQ(m_owner.ids(), Ids{});
}

TEST_F(PausedClock, IgnoresUnknownTimers) {
  const int known = startedTimer(1s);
  for (const int id : {0, -1, known + 1, 1'000'000}) {
    m_clock.startTimer(id);
    m_clock.stopTimer(id);
    m_clock.cancelTimer(id);
    m_clock.deleteTimer(id);
  }
  EXPECT_EQ(m_clock.armedTimers(), 1U);
}

TEST_F(PausedClock, DeliversEqualExpiriesInOrderOfCreation) {
  const int first = timer(10s);
  const int second = timer(10s);
  const int third = timer(10s);
  m_clock.startTimer(third);
  m_clock.startTimer(first);
  m_clock.startTimer(second);
  m_clock.advance(10s);
  EXPECT_EQ(m_owner.ids(), (Ids{first, second, third}));
}

TEST_F(PausedClock, DeliversAnEarlierExpiryBeforeAnOlderTimer) {
  const int late = startedTimer(20s);
  const int early = startedTimer(10s);
  m_clock.advance(20s);
  EXPECT_EQ(m_owner.ids(), (Ids{early, late}));
}

// All three are due; the first to come takes the others away, each in its way.
TEST_F(PausedClock, DropsAnExpiryThatIsDueButWasTakenAwayMeanwhile) {
  const int first = startedTimer(10s);
  const int stopped = startedTimer(10s);
  const int cancelled = startedTimer(10s);
  const int deleted = startedTimer(10s);
  m_owner.then = [&](int /*timer*/) {
    m_clock.stopTimer(stopped);
    m_clock.cancelTimer(cancelled);
    m_clock.deleteTimer(deleted);
  };
  m_clock.advance(1h);
  EXPECT_EQ(m_owner.ids(), Ids{first});
}

TEST_F(PausedClock, LetsATimerDeleteItself) {
  const int id = startedTimer(10s);
  m_owner.then = [&](int timer) { m_clock.deleteTimer(timer); };
  m_clock.advance(1h);
  EXPECT_EQ(m_owner.ids(), Ids{id});
}

TEST_F(PausedClock, CountsWhatItDelivered) {
  startedTimer(1s);
  startedTimer(2s);
  startedTimer(3s);
  m_clock.advance(2s);
  EXPECT_EQ(m_clock.expiriesDelivered(), 2U);
}

TEST_F(PausedClock, NeverFiresAfterTheEndOfTime) {
  m_clock.advance(VirtualClock::kLastUptime - 10s);
  startedTimer(10s + 1ns);
  EXPECT_EQ(m_clock.nextExpiry(), std::nullopt);
  const int id = startedTimer(10s);
  m_owner.then = [&](int timer) { m_clock.startTimer(timer); };
  m_clock.advance(Nanoseconds::max());
  EXPECT_EQ(m_owner.ids(), Ids{id});
}

TEST_F(PausedClock, TakesThePeriodsOfAnyLength) {
  startedTimer(Nanoseconds::max());
  EXPECT_EQ(m_clock.armedTimers(), 0U);
  startedTimer(std::chrono::milliseconds{4'294'967'295});
  EXPECT_EQ(m_clock.nextExpiry(), Nanoseconds{4'294'967'295ms});
}

TEST_F(PausedClock, TellsWhenTheEarliestExpiryChanges) {
  int told = 0;
  m_clock.onScheduleChange([&] {
    ++told;
    static_cast<void>(m_clock.nextExpiry());  // no lock is held
  });
  const int id = startedTimer(10s);
  EXPECT_EQ(told, 1);
  const int later = startedTimer(20s);
  EXPECT_EQ(told, 1) << "a later one changes nothing";
  m_clock.stopTimer(later);
  EXPECT_EQ(told, 1);
  m_clock.deleteTimer(id);
  EXPECT_EQ(told, 2);
}

TEST_F(PausedClock, TellsWhenTheWayToTheExpiryChanges) {
  int told = 0;
  startedTimer(10s);
  m_clock.onScheduleChange([&] { ++told; });
  m_clock.setSpeed(2);
  EXPECT_EQ(told, 1);
  m_clock.setSpeed(0);
  m_clock.advance(1s);
  EXPECT_EQ(told, 3);
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(told, 4);
  m_clock.onScheduleChange({});
  startedTimer(1s);
  EXPECT_EQ(told, 4);
}

TEST_F(PausedClock, LeavesTheRestToTheCallerOfRunDue) {
  int told = 0;
  startedTimer(0s);
  m_owner.then = [&](int /*timer*/) { startedTimer(1s); };
  m_clock.onScheduleChange([&] { ++told; });
  EXPECT_EQ(m_clock.runDue(9), 1U);
  EXPECT_EQ(told, 0);
  EXPECT_EQ(m_clock.nextExpiry(), Nanoseconds{1s});
}

}  // namespace
