// Timer operations from other threads, while the framework thread delivers.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <limits>
#include <thread>
#include <vector>

#include "clock/VirtualClock.h"
#include "support/Part.h"

namespace {

using namespace std::chrono_literals;
using host::VirtualClock;

// Delivers timers until it is destroyed.
class FrameworkThread {
 public:
  explicit FrameworkThread(VirtualClock& clock)
      : m_thread([this, &clock] {
          while (!m_ending) clock.runDue(64);
        }) {}
  ~FrameworkThread() {
    m_ending = true;
    m_thread.join();
  }
  FrameworkThread(const FrameworkThread&) = delete;
  FrameworkThread& operator=(const FrameworkThread&) = delete;

 private:
  std::atomic<bool> m_ending{false};
  std::thread m_thread;
};

TEST(TimerRace, CountsEachDeliveryOfManyThreadsTimers) {
  VirtualClock clock;
  std::atomic<std::uint64_t> count{0};
  support::Part owner;
  owner.onTimer = [&count](int) { ++count; };
  clock.setSpeed(std::numeric_limits<double>::infinity());
  const auto useTimers = [&] {
    for (int i = 0; i < 2000; ++i) {
      const int timer = clock.createTimer(owner, 1ms);
      clock.startTimer(timer);
      if (i % 3 == 0) clock.stopTimer(timer);
      clock.startTimer(timer);
      static_cast<void>(clock.wall());
      static_cast<void>(clock.setWall(1000s));
      if (i % 2 == 0) clock.cancelTimer(timer);
      clock.deleteTimer(timer);
    }
  };
  {
    const FrameworkThread framework(clock);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) threads.emplace_back(useTimers);
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(clock.armedTimers(), 0U);
  EXPECT_EQ(count, clock.expiriesDelivered());
}

// The clock counts a delivery as it begins: after the deletion it must not count another.
TEST(TimerRace, BeginsNoDeliveryAfterTheDeletion) {
  VirtualClock clock;
  support::Part owner;
  clock.setSpeed(std::numeric_limits<double>::infinity());
  const FrameworkThread framework(clock);
  for (int i = 0; i < 2000; ++i) {
    const int timer = clock.createTimer(owner, 1ms);
    clock.startTimer(timer);
    clock.deleteTimer(timer);
    const auto delivered = clock.expiriesDelivered();
    clock.startTimer(timer);
    EXPECT_EQ(clock.armedTimers(), 0U);
    EXPECT_EQ(clock.expiriesDelivered(), delivered);
  }
}

TEST(TimerRace, TimeNeverGoesBack) {
  VirtualClock clock;
  support::Part owner;
  clock.setSpeed(1e6);
  const FrameworkThread framework(clock);
  auto last = clock.uptime();
  for (int i = 0; i < 20'000; ++i) {
    const int timer = clock.createTimer(owner, 1ms);
    clock.startTimer(timer);
    const auto now = clock.uptime();
    ASSERT_LE(last, now);
    last = now;
    if (i % 2 == 0) clock.deleteTimer(timer);
    if (i % 100 == 0) clock.setSpeed(i % 200 == 0 ? 1e3 : 1e9);
  }
}

}  // namespace
