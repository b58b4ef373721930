#include <gtest/gtest.h>
#include <sys/sysinfo.h>
#include <sys/time.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <limits>
#include <thread>
#include <vector>

#include "SystemClock.h"
#include "clock/VirtualClock.h"
#include "interpose/ShiftedTime.h"

namespace {

using namespace std::chrono_literals;
using host::VirtualClock;

// The process with a virtual clock at 1,000,000,000.7 s.
class ProcessWithClock : public testing::Test {
 protected:
  ProcessWithClock() {
    host::setProcessClock(&m_clock);
    EXPECT_TRUE(m_clock.setWall(1'000'000'000s + 700ms));
  }
  ~ProcessWithClock() override { host::setProcessClock(nullptr); }

  VirtualClock m_clock;
};

TEST_F(ProcessWithClock, HasTheClockThatWasSet) {
  EXPECT_EQ(host::processClock(), &m_clock);
}

TEST_F(ProcessWithClock, TimeIsTheWholeSecond) {
  time_t stored = 0;
  EXPECT_EQ(time(&stored), 1'000'000'000);
  EXPECT_EQ(stored, 1'000'000'000);
  m_clock.advance(300ms);
  EXPECT_EQ(time(nullptr), 1'000'000'001);
}

TEST_F(ProcessWithClock, ShiftedTimeAffectsOneThread) {
  {
    const host::ShiftedTime shift(5s);
    EXPECT_EQ(time(nullptr), 1'000'000'005);
    time_t others = 0;
    std::thread([&others] { others = time(nullptr); }).join();
    EXPECT_EQ(others, 1'000'000'000);
    EXPECT_EQ(m_clock.wall(), 1'000'000'000s + 700ms);
  }
  EXPECT_EQ(time(nullptr), 1'000'000'000);
}

TEST_F(ProcessWithClock, TimeBeyondItsTypeIsAnOverflow) {
  constexpr std::chrono::seconds kLastOf32Bits{2'147'483'647};
  ASSERT_TRUE(m_clock.setWall(kLastOf32Bits));
  EXPECT_EQ(time(nullptr), 2'147'483'647);
  ASSERT_TRUE(m_clock.setWall(kLastOf32Bits + 1s));
  time_t stored = 5;
  errno = 0;
  const time_t now = time(&stored);
  if (sizeof(time_t) == 4) {
    EXPECT_EQ(now, -1);
    EXPECT_EQ(errno, EOVERFLOW);
    EXPECT_EQ(stored, 5);
  } else {
    EXPECT_EQ(static_cast<std::int64_t>(now), 2'147'483'648);
  }
}

TEST_F(ProcessWithClock, SettimeofdayJumps) {
  for (const timeval value : {timeval{1'500'000'000, 250'000}, timeval{0, 0}, timeval{0, 999'999},
                              timeval{2'147'483'647, 0}}) {
    EXPECT_EQ(settimeofday(&value, nullptr), 0) << value.tv_sec << "." << value.tv_usec;
    EXPECT_EQ(m_clock.wall(),
              std::chrono::seconds(value.tv_sec) + std::chrono::microseconds(value.tv_usec));
  }
  EXPECT_EQ(m_clock.uptime(), 0s);
}

TEST_F(ProcessWithClock, SettimeofdayRefusesOneStepOutside) {
  for (const timeval value : {timeval{-1, 0}, timeval{0, -1}, timeval{0, 1'000'000},
                              timeval{std::numeric_limits<time_t>::min(), 0}}) {
    errno = 0;
    EXPECT_EQ(settimeofday(&value, nullptr), -1) << value.tv_sec << "." << value.tv_usec;
    EXPECT_EQ(errno, EINVAL);
  }
  EXPECT_EQ(time(nullptr), 1'000'000'000);
}

TEST_F(ProcessWithClock, SettimeofdayRefusesNoTimeAndAKernelTimeZone) {
  const timeval value{5, 0};
  const struct timezone zone {};
  EXPECT_EQ(settimeofday(&value, &zone), -1);
  EXPECT_EQ(settimeofday(nullptr, nullptr), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(time(nullptr), 1'000'000'000);
}

TEST_F(ProcessWithClock, StimeRefusesNoTimeAndTimesBefore1970) {
  const time_t before = -1;
  EXPECT_EQ(stime(&before), -1);
  EXPECT_EQ(errno, EINVAL);
  errno = 0;
  EXPECT_EQ(stime(nullptr), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(time(nullptr), 1'000'000'000);
}

TEST_F(ProcessWithClock, DeviceSetterJumps) {
  EXPECT_EQ(votk_set_time_seconds_since_epoch(2'147'483'647UL), 0);
  EXPECT_EQ(m_clock.wall(), 2'147'483'647s);
  EXPECT_EQ(votk_set_time_seconds_since_epoch(0), 0);
  EXPECT_EQ(m_clock.wall(), 0s);
}

TEST_F(ProcessWithClock, DeviceSetterRefusesTimesThatAreTooLate) {
  constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();
  std::vector<unsigned long> late{kMost, kMost / 2 + 1};
  if (sizeof(unsigned long) > 4) late.push_back(static_cast<unsigned long>(8'000'000'000ULL));
  for (const unsigned long seconds : late) {
    EXPECT_LT(votk_set_time_seconds_since_epoch(seconds), 0) << seconds;
  }
  EXPECT_EQ(time(nullptr), 1'000'000'000);
}

TEST_F(ProcessWithClock, SysinfoShowsTheClocksUptime) {
  m_clock.advance(4000s + 999ms);
  struct sysinfo info {};
  ASSERT_EQ(sysinfo(&info), 0);
  EXPECT_EQ(info.uptime, 4000);
  EXPECT_GT(info.totalram, 0U) << "the rest is the machine's";
}

// The machine's seconds as the C library's `time` reads them.
time_t machineSeconds() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return now.tv_sec;
}

TEST(ProcessWithoutClock, ReadsTheMachine) {
  const time_t before = machineSeconds();
  const time_t now = time(nullptr);
  EXPECT_LE(before, now);
  EXPECT_LE(now, machineSeconds());
  struct sysinfo info {};
  ASSERT_EQ(sysinfo(&info), 0);
  EXPECT_GT(info.uptime, 0);
}

// Even a privileged process must not set the machine's clock.
TEST(ProcessWithoutClock, RefusesToSet) {
  const timeval value{1'000'000'000, 0};
  errno = 0;
  EXPECT_EQ(settimeofday(&value, nullptr), -1);
  EXPECT_EQ(errno, EPERM);
  errno = 0;
  EXPECT_EQ(stime(&value.tv_sec), -1);
  EXPECT_EQ(errno, EPERM);
  EXPECT_LT(votk_set_time_seconds_since_epoch(1'000'000'000), 0);
}

TEST(ProcessWithoutClock, HasNone) {
  EXPECT_EQ(host::processClock(), nullptr);
}

}  // namespace
