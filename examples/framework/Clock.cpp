#include "Clock.h"

#include <sys/sysinfo.h>
#include <sys/time.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <ctime>

#include "SystemClock.h"

namespace example {
namespace {

using Steady = std::chrono::steady_clock;

const Steady::time_point kStart = Steady::now();
std::atomic<bool> g_skipping{false};
std::atomic<Clock::Milliseconds> g_skippedTo{};  // the uptime while skipping
// Since 1970, where a device begins whose clock does not run while it is off.
std::atomic<Clock::Milliseconds> g_wallAtStart{};

int setWall(std::int64_t secondsSinceEpoch) {
  g_wallAtStart = std::chrono::seconds(secondsSinceEpoch) - Clock::uptime();
  return 0;
}

}  // namespace

Clock::Milliseconds Clock::uptime() {
  if (g_skipping) return g_skippedTo;
  return std::chrono::duration_cast<Milliseconds>(Steady::now() - kStart);
}

void Clock::startSkipping() {
  g_skippedTo = uptime();
  g_skipping = true;
}

bool Clock::isSkipping() {
  return g_skipping;
}

void Clock::skipTo(Milliseconds uptime) {
  g_skippedTo = uptime;
}

}  // namespace example

time_t time(time_t* result) noexcept {
  const example::Clock::Milliseconds wall =
      example::g_wallAtStart.load() + example::Clock::uptime();
  const auto now = static_cast<time_t>(std::chrono::floor<std::chrono::seconds>(wall).count());
  if (result != nullptr) *result = now;
  return now;
}

int stime(const time_t* seconds) noexcept {
  return example::setWall(*seconds);
}

int settimeofday(const timeval* value, const struct timezone* /*zone*/) noexcept {
  return example::setWall(value->tv_sec);
}

int votk_set_time_seconds_since_epoch(unsigned long secondsSinceEpoch) {
  return example::setWall(static_cast<std::int64_t>(secondsSinceEpoch));
}

int sysinfo(struct sysinfo* info) noexcept {
  *info = {};
  info->uptime = static_cast<long>(example::Clock::uptime() / std::chrono::seconds(1));
  return 0;
}
