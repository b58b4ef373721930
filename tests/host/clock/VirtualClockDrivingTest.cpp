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

class DrivenClock : public ClockUnderTest {
 protected:
  // Starts each timer again when it expires.
  void restartTimers() {
    m_onExpiry = [this](int timer) { m_clock.startTimer(timer); };
  }
};

TEST_F(DrivenClock, AdvancesByTheDuration) {
  m_clock.advance(90s);
  EXPECT_EQ(m_clock.uptime(), 90s);
  EXPECT_EQ(m_clock.wall(), 90s);
  m_clock.advance(0s);
  EXPECT_THROW(m_clock.advance(-1ns), std::invalid_argument);
  EXPECT_EQ(m_clock.uptime(), 90s);
}

TEST_F(DrivenClock, DeliversEachDueTimerAtItsInstant) {
  const int hourly = startedTimer(1h);
  restartTimers();
  m_clock.advance(3h + 59min);
  EXPECT_EQ(m_expiries, (Expiries{{hourly, 1h}, {hourly, 2h}, {hourly, 3h}}));
  EXPECT_EQ(m_clock.uptime(), 3h + 59min);
}

TEST_F(DrivenClock, ShowsAnOwnerItsInstantAndLetsItSetTheWallClock) {
  ASSERT_TRUE(m_clock.setWall(1'000'000s));
  startedTimer(1h);
  Nanoseconds wall{0};
  m_onExpiry = [&](int /*timer*/) {
    wall = m_clock.wall();
    EXPECT_TRUE(m_clock.setWall(5000s));
  };
  m_clock.advance(5h);
  EXPECT_EQ(wall, 1'000'000s + 1h);
  EXPECT_EQ(m_clock.wall(), 5000s + 4h);
  EXPECT_EQ(m_clock.uptime(), 5h);
}

TEST_F(DrivenClock, DeliversATimerStartedForTheSameInstant) {
  startedTimer(10s);
  const int follower = m_clock.createTimer(m_owner, 0s);
  m_onExpiry = [&](int timer) {
    if (timer != follower) m_clock.startTimer(follower);
  };
  m_clock.advance(10s);
  EXPECT_EQ(expiredIds(), (Ids{1, follower}));
  EXPECT_EQ(m_expiries.back().second, 10s);
}

TEST_F(DrivenClock, StandsStillForAllThreadsWhileAnOwnerRuns) {
  m_clock.setSpeed(1);
  startedTimer(10s);
  passRealTime(100s);
  Nanoseconds seen{0};
  m_onExpiry = [&](int /*timer*/) {
    passRealTime(100s);
    std::thread([&] { seen = m_clock.uptime(); }).join();
  };
  m_clock.runDue(1);
  EXPECT_EQ(seen, 10s);
  EXPECT_EQ(m_clock.uptime(), 200s);
}

TEST_F(DrivenClock, IgnoresTheRealTimeThatAnAdvanceTakes) {
  m_clock.setSpeed(1);
  startedTimer(10s);
  m_onExpiry = [&](int /*timer*/) { passRealTime(1h); };
  m_clock.advance(20s);
  EXPECT_EQ(m_clock.uptime(), 20s);
  passRealTime(1s);
  EXPECT_EQ(m_clock.uptime(), 21s);
}

TEST_F(DrivenClock, FiresTheNextTimerAndStaysThere) {
  const int id = startedTimer(1h);
  const int later = startedTimer(2h);
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(m_expiries, (Expiries{{id, 1h}}));
  EXPECT_EQ(m_clock.uptime(), 1h);
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(m_expiries, (Expiries{{id, 1h}, {later, 2h}}));
  EXPECT_FALSE(m_clock.fireNext()) << "no timer is armed";
  EXPECT_EQ(m_clock.uptime(), 2h);
}

TEST_F(DrivenClock, FiresOneOfTwoTimersDueAtOnce) {
  startedTimer(1h);
  startedTimer(1h);
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(expiredIds(), Ids{1});
  EXPECT_TRUE(m_clock.fireNext());
  EXPECT_EQ(expiredIds(), (Ids{1, 2}));
}

TEST_F(DrivenClock, DeliversDueTimersOnly) {
  m_clock.setSpeed(1);
  startedTimer(1s);
  startedTimer(2s);
  startedTimer(3s);
  passRealTime(2s);
  EXPECT_EQ(m_clock.runDue(9), 2U);
  EXPECT_EQ(m_expiries, (Expiries{{1, 1s}, {2, 2s}}));
  EXPECT_EQ(m_clock.runDue(9), 0U);
}

TEST_F(DrivenClock, DeliversNoMoreThanAllowed) {
  m_clock.setSpeed(1);
  for (int i = 0; i < 5; ++i) startedTimer(1s);
  passRealTime(1s);
  EXPECT_EQ(m_clock.runDue(0), 0U);
  EXPECT_EQ(m_clock.runDue(2), 2U);
  EXPECT_EQ(m_clock.realTimeToNextExpiry(), Nanoseconds{0});
  EXPECT_EQ(m_clock.runDue(9), 3U);
}

TEST_F(DrivenClock, DeliversOnlyWhatIsDueWhilePaused) {
  startedTimer(1ns);
  EXPECT_EQ(m_clock.runDue(9), 0U);
  const int now = startedTimer(0ns);
  EXPECT_EQ(m_clock.realTimeToNextExpiry(), Nanoseconds{0});
  EXPECT_EQ(m_clock.runDue(9), 1U);
  EXPECT_EQ(expiredIds(), Ids{now});
}

TEST_F(DrivenClock, DeliversInBoundedSlicesAtInfiniteSpeed) {
  startedTimer(1h);
  restartTimers();
  m_clock.setSpeed(std::numeric_limits<double>::infinity());
  EXPECT_EQ(m_clock.runDue(100), 100U);
  EXPECT_EQ(m_expiries.back().second, 100h);
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

TEST_F(DrivenClock, StopsWhenAnOwnerPausesIt) {
  startedTimer(1h);
  m_onExpiry = [&](int timer) {
    m_clock.startTimer(timer);
    if (m_expiries.size() == 3) m_clock.setSpeed(0);
  };
  m_clock.setSpeed(std::numeric_limits<double>::infinity());
  EXPECT_EQ(m_clock.runDue(100), 3U);
  EXPECT_EQ(m_clock.uptime(), 3h);
}

TEST_F(DrivenClock, PassesOnAnOwnersExceptionAndContinues) {
  startedTimer(1s);
  const int second = startedTimer(2s);
  m_onExpiry = [](int /*timer*/) { throw std::runtime_error("on purpose"); };
  EXPECT_THROW(m_clock.advance(5s), std::runtime_error);
  EXPECT_EQ(m_clock.uptime(), 1s);
  m_onExpiry = {};
  m_clock.advance(4s);
  EXPECT_EQ(expiredIds(), (Ids{1, second}));
  EXPECT_EQ(m_clock.uptime(), 5s);
}

TEST_F(DrivenClock, RefusesToBeDrivenByAnOwner) {
  startedTimer(1s);
  m_onExpiry = [&](int /*timer*/) {
    EXPECT_THROW(m_clock.advance(1s), std::logic_error);
    EXPECT_THROW(static_cast<void>(m_clock.fireNext()), std::logic_error);
    EXPECT_THROW(m_clock.runDue(1), std::logic_error);
  };
  m_clock.advance(2s);
  EXPECT_EQ(m_expiries.size(), 1U);
  EXPECT_EQ(m_clock.uptime(), 2s);
}

// Takes far too long if the cost of one timer grows with the number of timers.
TEST_F(DrivenClock, HandlesTenThousandTimers) {
  constexpr int kTimers = 10'000;
  for (int i = 0; i < kTimers; ++i) startedTimer(1s + Nanoseconds{i});
  restartTimers();
  m_clock.advance(10s + 1ms);
  EXPECT_EQ(m_clock.expiriesDelivered(), 10U * kTimers);
  EXPECT_EQ(m_clock.armedTimers(), static_cast<std::size_t>(kTimers));
}

}  // namespace
