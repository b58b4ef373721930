#include "runtime/EventLoop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/Descriptor.h"
#include "clock/VirtualClock.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"
#include "support/OpenDescriptors.h"
#include "support/Part.h"

namespace host {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

constexpr double kUnlimitedSpeed = std::numeric_limits<double>::infinity();

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    reader.reset(ends[0]);
    writer.reset(ends[1]);
  }
  Descriptor reader;
  Descriptor writer;
};

class IdleEventLoop : public ::testing::Test {
 protected:
  int arm(std::chrono::nanoseconds period) {
    const int timer = clock.createTimer(owner, period);
    clock.startTimer(timer);
    return timer;
  }

  VirtualClock clock;
  EventLoop loop{clock};
  support::Part owner;
};

TEST_F(IdleEventLoop, RunsTasksInOrderUntilItIsStopped) {
  std::vector<int> order;
  loop.post([&] { order.push_back(1); });
  loop.post([&] { order.push_back(2); });
  loop.post([&] { loop.stop(); });
  loop.run();
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_F(IdleEventLoop, RunsADelayedTaskAfterThoseThatAreQueued) {
  std::vector<int> order;
  loop.postAfter(milliseconds(1), [&] {
    order.push_back(2);
    loop.stop();
  });
  loop.post([&] { order.push_back(1); });
  loop.run();
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_F(IdleEventLoop, ThrowsWhatATaskThrows) {
  loop.postAfter(milliseconds(1), [] { throw std::runtime_error("a task"); });
  EXPECT_THROW(loop.run(), std::runtime_error);
}

TEST_F(IdleEventLoop, RunsTheTaskEachTimeADescriptorIsReadable) {
  const Pipe pipe;
  std::string taken;
  loop.onReadable(pipe.reader.get(), milliseconds(1), [&] {
    char byte = 0;
    EXPECT_EQ(read(pipe.reader.get(), &byte, 1), 1);
    taken += byte;
    if (taken.size() == 2) loop.stop();
    ASSERT_EQ(write(pipe.writer.get(), "b", 1), 1);
  });
  ASSERT_EQ(write(pipe.writer.get(), "a", 1), 1);
  loop.run();
  EXPECT_EQ(taken, "ab");
}

TEST_F(IdleEventLoop, KeepsWatchingADescriptorWhoseTaskThrows) {
  const support::LogCapture log;
  const Pipe pipe;
  ASSERT_EQ(write(pipe.writer.get(), "a", 1), 1);
  int ran = 0;
  loop.onReadable(pipe.reader.get(), milliseconds(1), [&] {
    if (++ran == 2) loop.stop();
    throw std::runtime_error("failed");
  });
  EXPECT_NO_THROW(loop.run());
  EXPECT_EQ(ran, 2);
  EXPECT_EQ(log.count("a task of the loop threw \"failed\""), 2U) << log.text();
}

TEST_F(IdleEventLoop, ClosesADescriptorThatItHasNoMemoryToWatch) {
  const Pipe pipe;
  const auto before = support::openDescriptors();
  std::size_t allocations = 0;
  for (bool taken = false; !taken; ++allocations) {
    std::function<void()> task = [] {};
    try {
      const support::NoMemory none(allocations);
      loop.onReadable(pipe.reader.get(), milliseconds(1), std::move(task));
      taken = true;
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(support::openDescriptors(), before) << allocations;
    }
  }
  EXPECT_GT(allocations, 1U);
  EXPECT_EQ(support::openDescriptors(), before + 1);
}

TEST_F(IdleEventLoop, NoticesAChangeOfTheScheduleWithoutMemory) {
  owner.onTimer = [&](int) { loop.stop(); };
  arm(hours(1));
  loop.post([&] { loop.stop(); });
  loop.run();
  {
    const support::NoMemory none;
    clock.setSpeed(kUnlimitedSpeed);
  }
  loop.run();
  EXPECT_EQ(clock.expiriesDelivered(), 1U);
}

TEST_F(IdleEventLoop, DropsATaskThatHasNoMemoryAndContinues) {
  const support::LogCapture log;
  loop.post([] { throw std::bad_alloc(); });
  loop.post([&] { loop.stop(); });
  EXPECT_NO_THROW(loop.run());
  EXPECT_EQ(log.count("dropped an event-loop task: out of memory"), 1U) << log.text();
}

TEST_F(IdleEventLoop, IsWokenByATaskOfAnotherThread) {
  std::thread other([&] { loop.post([&] { loop.stop(); }); });
  loop.run();
  other.join();
}

TEST_F(IdleEventLoop, DeliversExpiriesOfTheRunningClock) {
  owner.onTimer = [&](int) { loop.stop(); };
  arm(hours(1));
  clock.setSpeed(3'600'000);  // an hour in a millisecond
  loop.run();
  EXPECT_EQ(clock.expiriesDelivered(), 1U);
}

TEST_F(IdleEventLoop, RunsTasksWhileThePausedClockHoldsTimersBack) {
  arm(milliseconds(0));
  arm(hours(1));
  loop.post([&] { loop.post([&] { loop.stop(); }); });
  loop.run();
  EXPECT_LE(clock.expiriesDelivered(), 1U);
  EXPECT_EQ(clock.armedTimers() + clock.expiriesDelivered(), 2U);
}

TEST_F(IdleEventLoop, IsWokenByATimerThatIsStarted) {
  clock.setSpeed(1000);
  owner.onTimer = [&](int) { loop.stop(); };
  std::thread other([&] { arm(milliseconds(10)); });
  loop.run();
  other.join();
  EXPECT_EQ(clock.expiriesDelivered(), 1U);
}

TEST_F(IdleEventLoop, IsWokenByAChangeOfSpeed) {
  owner.onTimer = [&](int) { loop.stop(); };
  arm(hours(1000));
  std::thread other([&] { clock.setSpeed(kUnlimitedSpeed); });
  loop.run();
  other.join();
  EXPECT_EQ(clock.uptime(), hours(1000));
}

TEST_F(IdleEventLoop, RunsTasksBetweenEndlessExpiries) {
  owner.onTimer = [&](int timer) { clock.startTimer(timer); };
  arm(milliseconds(1));
  clock.setSpeed(kUnlimitedSpeed);
  int rounds = 0;
  std::function<void()> task = [&] {
    if (++rounds == 10) return loop.stop();
    loop.post(task);
  };
  loop.post(task);
  loop.run();
  EXPECT_EQ(rounds, 10);
  EXPECT_LE(clock.expiriesDelivered(), 11 * EventLoop::kSlice);
}

TEST_F(IdleEventLoop, LogsTheExceptionOfATimersOwnerAndContinues) {
  const support::LogCapture log;
  int expiries = 0;
  owner.onTimer = [&](int) {
    if (++expiries == 2) loop.stop();
    throw std::runtime_error("failed");
  };
  arm(milliseconds(1));
  arm(milliseconds(2));
  clock.setSpeed(kUnlimitedSpeed);
  loop.run();
  EXPECT_EQ(expiries, 2);
  EXPECT_EQ(log.count("an expired timer's owner threw \"failed\""), 2U) << log.text();
}

TEST_F(IdleEventLoop, RunsTasksAfterASliceOfSlowExpiries) {
  owner.onTimer = [&](int timer) {
    clock.startTimer(timer);
    const auto end = std::chrono::steady_clock::now() + EventLoop::kSliceTime;
    while (std::chrono::steady_clock::now() < end) continue;
  };
  arm(milliseconds(1));
  clock.setSpeed(kUnlimitedSpeed);
  std::uint64_t expiries = EventLoop::kSlice;
  loop.post([&] {
    loop.post([&] {
      expiries = clock.expiriesDelivered();
      loop.stop();
    });
  });
  loop.run();
  EXPECT_LE(expiries, 2U);
}

TEST(EventLoop, IsOutlivedByItsClock) {
  VirtualClock clock;
  support::Part owner;
  { const EventLoop loop(clock); }
  clock.startTimer(clock.createTimer(owner, milliseconds(1)));
  clock.setSpeed(kUnlimitedSpeed);
  EXPECT_EQ(clock.runDue(1), 1U);
}

}  // namespace
}  // namespace host
