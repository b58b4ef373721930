#include "clock/VirtualClock.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "ClockUnderTest.h"

namespace {

using namespace std::chrono_literals;
using host::VirtualClock;
using Nanoseconds = VirtualClock::Nanoseconds;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

using RunningClock = ClockUnderTest;

TEST(VirtualClock, StartsPausedAtTheEpoch) {
  const VirtualClock clock;
  EXPECT_EQ(clock.wall(), 0ns);
  EXPECT_EQ(clock.uptime(), 0ns);
  EXPECT_EQ(clock.speed(), 0);
  EXPECT_EQ(clock.source(), VirtualClock::Source::virtualTime);
}

TEST_F(RunningClock, FollowsRealTimeAtSpeedOneToTheNanosecond) {
  m_clock.setSpeed(1);
  passRealTime(400 * 24h + 1ns);
  EXPECT_EQ(m_clock.uptime(), 400 * 24h + 1ns);
  EXPECT_EQ(m_clock.wall(), 400 * 24h + 1ns);
}

TEST_F(RunningClock, RunsAtAnySpeedAndKeepsItsTimeWhenItChanges) {
  m_clock.setSpeed(3600);
  passRealTime(2s);
  EXPECT_EQ(m_clock.uptime(), 2h);
  m_clock.setSpeed(0.5);
  passRealTime(2s);
  EXPECT_EQ(m_clock.uptime(), 2h + 1s);
  m_clock.setSpeed(0);
  passRealTime(1h);
  EXPECT_EQ(m_clock.uptime(), 2h + 1s);
  m_clock.setSpeed(1);
  EXPECT_EQ(m_clock.uptime(), 2h + 1s);
}

TEST_F(RunningClock, RefusesNegativeSpeedsAndNaN) {
  m_clock.setSpeed(2);
  for (const double speed : {-1.0, -0.001, -kInfinity, std::nan("")}) {
    EXPECT_THROW(m_clock.setSpeed(speed), std::invalid_argument) << speed;
  }
  EXPECT_EQ(m_clock.speed(), 2);
}

TEST_F(RunningClock, JumpLeavesUptimeAndTimersAlone) {
  m_clock.setSpeed(1);
  startedTimer(1h);
  passRealTime(10s);
  ASSERT_TRUE(m_clock.setWall(1'000'000'000s));
  EXPECT_EQ(m_clock.wall(), 1'000'000'000s);
  EXPECT_EQ(m_clock.uptime(), 10s);
  EXPECT_EQ(m_clock.nextExpiry(), Nanoseconds{1h});
  passRealTime(5s);
  EXPECT_EQ(m_clock.wall(), 1'000'000'005s);
}

// A telephone adds whole seconds of uptime to a time set by hand, and ignores later sets of the
// wall clock.
TEST_F(RunningClock, ShowsATimeSetByHandFromThenOn) {
  m_clock.setSpeed(1);
  passRealTime(1500ms);
  EXPECT_EQ(m_clock.shown(), 1500ms);
  EXPECT_FALSE(m_clock.setByHand());
  Nanoseconds replaced{0};
  m_clock.onWallSet([&](Nanoseconds from, Nanoseconds, VirtualClock::Setter) { replaced = from; });
  ASSERT_TRUE(m_clock.setWall(1000s, VirtualClock::Setter::hand));
  EXPECT_EQ(replaced, 1500ms);
  EXPECT_EQ(m_clock.shown(), 1000s + 500ms);
  ASSERT_TRUE(m_clock.setWall(5s));
  EXPECT_EQ(replaced, 1000s);
  passRealTime(10s);
  EXPECT_EQ(m_clock.shown(), 1010s + 500ms);
  EXPECT_TRUE(m_clock.setByHand());
  ASSERT_TRUE(m_clock.setWall(2000s, VirtualClock::Setter::hand));
  EXPECT_EQ(replaced, 1010s + 500ms) << "the shown time, not the wall time";
  EXPECT_EQ(m_clock.shown(), 2000s + 500ms);
}

TEST_F(RunningClock, ARefusedSetByHandChangesNothing) {
  ASSERT_FALSE(m_clock.setWall(-1ns, VirtualClock::Setter::hand));
  EXPECT_FALSE(m_clock.setByHand());
}

TEST(VirtualClock, AcceptsEachWallTimeUpToTheLast) {
  VirtualClock clock;
  for (const Nanoseconds wall : {Nanoseconds{0}, Nanoseconds{1}, VirtualClock::kLastWall}) {
    EXPECT_TRUE(clock.setWall(wall)) << wall.count();
    EXPECT_EQ(clock.wall(), wall);
  }
}

TEST(VirtualClock, RefusesAWallTimeOneStepOutside) {
  for (const auto source : {VirtualClock::Source::virtualTime, VirtualClock::Source::system}) {
    VirtualClock clock(source);
    for (const Nanoseconds wall : {Nanoseconds{-1}, VirtualClock::kLastWall + 1ns}) {
      errno = 0;
      EXPECT_FALSE(clock.setWall(wall)) << wall.count();
      EXPECT_EQ(errno, EINVAL);
    }
  }
}

TEST_F(RunningClock, StopsAtTheLastUptime) {
  m_clock.setSpeed(1e300);
  passRealTime(1h);
  EXPECT_EQ(m_clock.uptime(), VirtualClock::kLastUptime);
  m_clock.setSpeed(1);
  passRealTime(1h);
  EXPECT_EQ(m_clock.uptime(), VirtualClock::kLastUptime);
}

TEST_F(RunningClock, NeverWrapsItsWallTime) {
  ASSERT_TRUE(m_clock.setWall(VirtualClock::kLastWall));
  m_clock.advance(VirtualClock::kLastUptime);
  EXPECT_EQ(m_clock.wall(), Nanoseconds::max());
}

TEST_F(RunningClock, StopsAtAnArmedTimerUntilItIsDelivered) {
  m_clock.setSpeed(1);
  startedTimer(10s);
  passRealTime(9s);
  EXPECT_EQ(m_clock.uptime(), 9s);
  passRealTime(91s);
  EXPECT_EQ(m_clock.uptime(), 10s);
  EXPECT_EQ(m_clock.wall(), 10s);
}

TEST_F(RunningClock, IsAtTheNextTimerAtInfiniteSpeedAndDoesNotGoBackWhenItIsDeleted) {
  m_clock.setSpeed(kInfinity);
  EXPECT_EQ(m_clock.uptime(), 0s);
  const int timer = startedTimer(1h);
  EXPECT_EQ(m_clock.uptime(), 1h);
  m_clock.deleteTimer(timer);
  EXPECT_EQ(m_clock.uptime(), 1h);
  m_clock.setSpeed(1);
  EXPECT_EQ(m_clock.uptime(), 1h);
}

TEST_F(RunningClock, ComputesTheRealTimeToTheNextExpiry) {
  startedTimer(10s);
  EXPECT_EQ(m_clock.realTimeToNextExpiry(), std::nullopt) << "paused";
  const std::pair<double, Nanoseconds> rows[] = {
      {1, 10s}, {10, 1s}, {0.5, 20s}, {3, 3'333'333'334ns}, {kInfinity, 0s}};
  for (const auto& [speed, wait] : rows) {
    m_clock.setSpeed(0);
    m_clock.setSpeed(speed);
    EXPECT_EQ(m_clock.realTimeToNextExpiry(), wait) << speed;
  }
}

TEST_F(RunningClock, HasNoExpiryToWaitForWithoutATimer) {
  for (const double speed : {0.0, 1.0, 1e9, kInfinity}) {
    m_clock.setSpeed(speed);
    EXPECT_EQ(m_clock.realTimeToNextExpiry(), std::nullopt) << speed;
  }
}

TEST_F(RunningClock, DoesNotWaitForATimerThatIsDue) {
  m_clock.setSpeed(1);
  startedTimer(10s);
  for (int i = 0; i < 2; ++i) {
    passRealTime(10s);
    EXPECT_EQ(m_clock.realTimeToNextExpiry(), Nanoseconds{0}) << i;
  }
}

TEST_F(RunningClock, BoundsTheWaitAtAVerySlowSpeed) {
  m_clock.setSpeed(1e-300);
  startedTimer(10s);
  const auto wait = m_clock.realTimeToNextExpiry();
  ASSERT_TRUE(wait);
  EXPECT_GT(*wait, 24h);
  EXPECT_LE(*wait, 24h * 366);
}

TEST_F(RunningClock, DeliversAfterTheComputedWaitAtAnySpeed) {
  for (const double speed : {0.3, 1.0, 1.7, 60.0, 86'400.0, 12'345'678.9}) {
    m_clock.setSpeed(speed);
    startedTimer(7777s);
    for (int i = 0; i < 2; ++i) passRealTime(m_clock.realTimeToNextExpiry().value_or(0ns));
    EXPECT_EQ(m_clock.runDue(9), 1U) << speed;
  }
}

TEST(VirtualClock, ReadsTheMachinesClockInSystemMode) {
  const VirtualClock clock(VirtualClock::Source::system);
  const auto before = std::chrono::system_clock::now().time_since_epoch();
  const auto wall = clock.wall();
  const auto after = std::chrono::system_clock::now().time_since_epoch();
  EXPECT_LE(before, wall);
  EXPECT_LE(wall, after);
  EXPECT_GT(clock.uptime(), 0ns);
  EXPECT_EQ(clock.speed(), 1);
}

TEST(VirtualClock, KeepsSpeedOneInSystemMode) {
  VirtualClock clock(VirtualClock::Source::system);
  clock.setSpeed(1);
  EXPECT_THROW(clock.setSpeed(2), std::invalid_argument);
  EXPECT_THROW(clock.setSpeed(0), std::invalid_argument);
  EXPECT_THROW(clock.advance(1s), std::logic_error);
  EXPECT_THROW(static_cast<void>(clock.fireNext()), std::logic_error);
}

TEST(VirtualClock, DeliversDueTimersInSystemMode) {
  VirtualClock clock(VirtualClock::Source::system);
  support::Part owner;
  std::vector<int> expired;
  owner.onTimer = [&](int timer) { expired.push_back(timer); };
  const int soon = clock.createTimer(owner, 0ns);
  const int late = clock.createTimer(owner, 1h);
  clock.startTimer(late);
  clock.startTimer(soon);
  EXPECT_EQ(clock.runDue(9), 1U);
  EXPECT_EQ(expired, std::vector<int>{soon});
  ASSERT_TRUE(clock.realTimeToNextExpiry());
  EXPECT_LE(*clock.realTimeToNextExpiry(), 1h);
}

}  // namespace
