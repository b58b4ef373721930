#include "SystemClock.h"

#include <sys/sysinfo.h>
#include <sys/time.h>

#include <vector>

#include "Context.h"
#include "Promise.h"
#include "TimerOwner.h"

namespace {

using std::chrono::seconds;

constexpr time_t kInstant = 1'900'000'000;  // in March 2030

// Seconds since the system start.
long uptime() {
  struct sysinfo info {};
  EXPECT_EQ(sysinfo(&info), 0);
  return info.uptime;
}

// The clock may have advanced by a second since it was set.
class SystemClockPromise : public conformance::Promise {
 protected:
  static void expectTime(time_t expected) {
    const time_t now = time(nullptr);
    EXPECT_TRUE(now == expected || now == expected + 1) << now << ", expected " << expected;
  }
};

TEST_F(SystemClockPromise, IsSetBySecondsSinceTheEpoch) {
  promises("Sets the device's system clock. Returns 0, or a negative number on failure.");
  EXPECT_EQ(votk_set_time_seconds_since_epoch(static_cast<unsigned long>(kInstant)), 0);
  expectTime(kInstant);
}

TEST_F(SystemClockPromise, IsSetByStime) {
  promises("sets the system clock to *seconds since 1970-01-01 UTC. Returns 0");
  EXPECT_EQ(stime(&kInstant), 0);
  expectTime(kInstant);
}

TEST_F(SystemClockPromise, IsSetBySettimeofday) {
  promises("`time` reads the same clock and `settimeofday` sets it");
  const timeval wanted{kInstant, 0};
  EXPECT_EQ(settimeofday(&wanted, nullptr), 0);
  expectTime(kInstant);
}

TEST_F(SystemClockPromise, RunsAsTimePasses) {
  promises("`time` reads the same clock");
  EXPECT_EQ(stime(&kInstant), 0);
  platform().passTime(seconds{3600});
  expectTime(kInstant + 3600);
}

TEST_F(SystemClockPromise, DoesNotMoveTheUptime) {
  promises("Setting it moves neither the uptime that `sysinfo` tells nor the timers.");
  const long before = uptime();
  EXPECT_EQ(stime(&kInstant), 0);
  EXPECT_NEAR(static_cast<double>(uptime()), static_cast<double>(before), 1);
  platform().passTime(seconds{100});
  EXPECT_NEAR(static_cast<double>(uptime()), static_cast<double>(before + 100), 1);
}

TEST_F(SystemClockPromise, DoesNotMoveTheTimers) {
  promises("Setting it moves neither the uptime that `sysinfo` tells nor the timers.");
  conformance::TimerOwner owner;
  Context& context = platform().context();
  const int id = context.createTimer(owner, 10'000);
  for (const time_t instant : {kInstant, kInstant - 86'400}) {
    owner.expired.clear();
    context.startTimer(id);
    EXPECT_EQ(stime(&instant), 0);
    platform().passTime(seconds{9});
    EXPECT_EQ(owner.expired, std::vector<int>{}) << instant;
    platform().passTime(seconds{1});
    EXPECT_EQ(owner.expired, std::vector<int>{id}) << instant;
  }
}

}  // namespace
