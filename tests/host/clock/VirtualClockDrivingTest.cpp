#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <stdexcept>
#include <thread>

#include "ClockUnderTest.h"
#include "clock/VirtualClock.h"

namespace {

using namespace std::chrono_literals;
using host::VirtualClock;
using Ids = std::vector<int>;
using Nanoseconds = VirtualClock::Nanoseconds;
using Notes = std::vector<TimerOwner::Note>;

class DrivenClock : public ClockUnderTest {
 protected:
  // Starts each timer again as it comes.
  void repeat() {
    m_owner.then = [this](int timer) { m_clock.startTimer(timer); };
  }
};

TEST_F(DrivenClock, AdvancesByTheDuration) {
  m_clock.advance(90s);
  EXPECT_EQ(m_clock.uptime(), 90s);
  EXPECT_EQ(m_clock.wall(), 90s);
  m_clock.advance(0s);
  EXPECT_EQ(m_clock.uptime(), 90s);
}

TEST_F(DrivenClock, RefusesToGoBack) {
  m_clock.advance(90s);
  EXPECT_THROW(m_clock.advance(-1ns), std::invalid_argument);
  EXPECT_EQ(m_clock.uptime(), 90s);
}

TEST_F(DrivenClock, FiresEachTimerOnTheWayAtItsOwnInstant) {
  const int hourly = startedTimer(1h);
  repeat();
  m_clock.advance(3h + 59min);
  EXPECT_EQ(m_owner.notes, (Notes{{hourly, 1h}, {hourly, 2h}, {hourly, 3h}}));
  EXPECT_EQ(m_clock.uptime(), 3h + 59min);
}

TEST_F(DrivenClock, ShowsTheInstantAsWallTimeToo) {
  ASSERT_TRUE(m_clock.setWall(1'000'000s));
  startedTimer(1h);
  Nanoseconds wall{0};
  m_owner.then = [&](int /*timer*/) { wall = m_clock.wall(); };
  m_clock.advance(5h);
  EXPECT_EQ(wall, 1'000'000s + 1h);
}

TEST_F(DrivenClock, FiresATimerOfTheSameInstantInTheSameAdvance) {
  startedTimer(10s);
  const int follower = m_clock.createTimer(m_owner, 0s);
  m_owner.then = [&](int timer) {
    if (timer != follower) m_clock.startTimer(follower);
  };
  m_clock.advance(10s);
  EXPECT_EQ(m_owner.ids(), (Ids{1, follower}));
  EXPECT_EQ(m_owner.notes.back().second, 10s);
}

TEST_F(DrivenClock, LetsAnExpirySetTheWallClock) {
  startedTimer(10s);
  m_owner.then = [&](int /*timer*/) { EXPECT_TRUE(m_clock.setWall(5000s)); };
  m_clock.advance(30s);
  EXPECT_EQ(m_clock.wall(), 5020s);
  EXPECT_EQ(m_clock.uptime(), 30s);
}

TEST_F(DrivenClock, StandsForOtherThreadsWhileAnExpiryIsHandled) {
  m_clock.setSpeed(1);
  startedTimer(10s);
  m_real.pass(100s);
  Nanoseconds seen{0};
  m_owner.then = [&](int /*timer*/) {
    m_real.pass(100s);
    std::thread([&] { seen = m_clock.uptime(); }).join();
  };
  m_clock.runDue(1);
  EXPECT_EQ(seen, 10s);
  EXPECT_EQ(m_clock.uptime(), 200s);
}

TEST_F(DrivenClock, DoesNotCountRealTimeThatAnAdvanceTakes) {
  m_clock.setSpeed(1);
  startedTimer(10s);
  m_owner.then = [&](int /*timer*/) { m_real.pass(1h); };
  m_clock.advance(20s);
  EXPECT_EQ(m_clock.uptime(), 20s);
  m_real.pass(1s);
  EXPECT_EQ(m_clock.uptime(), 21s);
}

TEST_F(DrivenClock, GoesOnFromTheNextExpiry) {
  const int id = startedTimer(1h);
  const int later = startedTimer(2h);
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(m_owner.notes, (Notes{{id, 1h}}));
  EXPECT_EQ(m_clock.uptime(), 1h);
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(m_owner.notes.back(), (TimerOwner::Note{later, 2h}));
  EXPECT_FALSE(m_clock.fireNext());
  EXPECT_EQ(m_clock.uptime(), 2h);
}

TEST_F(DrivenClock, FiresOneOfTwoEqualExpiriesAtATime) {
  startedTimer(1h);
  startedTimer(1h);
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(m_owner.ids(), Ids{1});
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(m_owner.ids(), (Ids{1, 2}));
}

TEST_F(DrivenClock, RunsWhatIsDueAndNoMore) {
  m_clock.setSpeed(1);
  startedTimer(1s);
  startedTimer(2s);
  startedTimer(3s);
  m_real.pass(2s);
  EXPECT_EQ(m_clock.runDue(9), 2U);
  EXPECT_EQ(m_owner.notes, (Notes{{1, 1s}, {2, 2s}}));
  EXPECT_EQ(m_clock.runDue(9), 0U);
}

TEST_F(DrivenClock, RunsNoMoreThanItIsAllowed) {
  m_clock.setSpeed(1);
  for (int i = 0; i < 5; ++i) startedTimer(1s);
  m_real.pass(1s);
  EXPECT_EQ(m_clock.runDue(0), 0U);
  EXPECT_EQ(m_clock.runDue(2), 2U);
  EXPECT_EQ(m_clock.realTimeToNextExpiry(), Nanoseconds{0});
  EXPECT_EQ(m_clock.runDue(9), 3U);
}

TEST_F(DrivenClock, RunsNothingWhilePausedButWhatIsDueNow) {
  startedTimer(1ns);
  EXPECT_EQ(m_clock.runDue(9), 0U);
  const int now = startedTimer(0ns);
  EXPECT_EQ(m_clock.realTimeToNextExpiry(), Nanoseconds{0});
  EXPECT_EQ(m_clock.runDue(9), 1U);
  EXPECT_EQ(m_owner.ids(), Ids{now});
}

TEST_F(DrivenClock, GoesFromTimerToTimerAtInfiniteSpeedInBoundedSlices) {
  startedTimer(1h);
  repeat();
  m_clock.setSpeed(std::numeric_limits<double>::infinity());
  EXPECT_EQ(m_clock.runDue(100), 100U);
  EXPECT_EQ(m_owner.notes.back().second, 100h);
  m_clock.setSpeed(0);
  EXPECT_EQ(m_clock.uptime(), 101h);
}

TEST_F(DrivenClock, StaysAtTheLastExpiryAtInfiniteSpeed) {
  startedTimer(1h);
  m_clock.setSpeed(std::numeric_limits<double>::infinity());
  EXPECT_EQ(m_clock.runDue(9), 1U);
  EXPECT_EQ(m_clock.uptime(), 1h);
  startedTimer(1h);
  EXPECT_EQ(m_clock.nextExpiry(), Nanoseconds{2h});
}

TEST_F(DrivenClock, CanBeSlowedDownByAnExpiry) {
  startedTimer(1h);
  m_owner.then = [&](int timer) {
    m_clock.startTimer(timer);
    if (m_owner.notes.size() == 3) m_clock.setSpeed(0);
  };
  m_clock.setSpeed(std::numeric_limits<double>::infinity());
  EXPECT_EQ(m_clock.runDue(100), 3U);
  EXPECT_EQ(m_clock.uptime(), 3h);
}

TEST_F(DrivenClock, PassesOnWhatAnOwnerThrowsAndGoesOn) {
  startedTimer(1s);
  const int second = startedTimer(2s);
  m_owner.then = [](int /*timer*/) { throw std::runtime_error("on purpose"); };
  EXPECT_THROW(m_clock.advance(5s), std::runtime_error);
  EXPECT_EQ(m_clock.uptime(), 1s);
  m_owner.then = {};
  m_clock.advance(4s);
  EXPECT_EQ(m_owner.ids(), (Ids{1, second}));
  EXPECT_EQ(m_clock.uptime(), 5s);
}

TEST_F(DrivenClock, CannotBeDrivenFromInsideAnExpiry) {
  startedTimer(1s);
  m_owner.then = [&](int /*timer*/) {
    EXPECT_THROW(m_clock.advance(1s), std::logic_error);
    EXPECT_THROW(static_cast<void>(m_clock.fireNext()), std::logic_error);
    EXPECT_THROW(m_clock.runDue(1), std::logic_error);
  };
  m_clock.advance(2s);
  EXPECT_EQ(m_owner.notes.size(), 1U);
  EXPECT_EQ(m_clock.uptime(), 2s);
}

TEST_F(DrivenClock, PassesAYearOfHours) {
  startedTimer(1h);
  startedTimer(24h);
  repeat();
  m_clock.advance(365 * 24h);
  EXPECT_EQ(m_clock.expiriesDelivered(), 365U * 25U);
}

// Each timer is started again at each expiry: the cost of one does not grow with their number, or
// this would not end in time.
TEST_F(DrivenClock, KeepsTenThousandTimersApart) {
  constexpr int kTimers = 10'000;
  for (int i = 0; i < kTimers; ++i) startedTimer(1s + Nanoseconds{i});
  repeat();
  m_clock.advance(10s + 1ms);
  EXPECT_EQ(m_clock.expiriesDelivered(), 10U * kTimers);
  EXPECT_EQ(m_clock.armedTimers(), static_cast<std::size_t>(kTimers));
}

}  // namespace
