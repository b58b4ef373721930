// The C library's time calls, redefined for this process and the plug-ins it loads: they read and
// set the process clock. Without one they read the machine's clock and refuse to set it: only a
// VirtualClock of source "system" sets the machine's clock.
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

#include "SystemClock.h"
#include "clock/VirtualClock.h"
#include "interpose/ShiftedTime.h"

namespace host {
namespace {

using std::chrono::seconds;

thread_local seconds t_later{0};

template <class Time>
bool fits(seconds::rep count) {
  return count >= std::numeric_limits<Time>::min() && count <= std::numeric_limits<Time>::max();
}

seconds::rep wallSeconds() {
  if (const VirtualClock* clock = processClock()) {
    return (std::chrono::floor<seconds>(clock->wall()) + t_later).count();
  }
  // The coarse clock, as in the C library's `time`. VirtualClock must not use it: it is up to a
  // tick late, and a timer that expires at a full hour could still read hh:59:59.
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return now.tv_sec;
}

// 0, or -1 with errno.
int setWall(seconds::rep wholeSeconds, std::chrono::microseconds rest,
            VirtualClock::Setter setter) noexcept {
  // Compared as seconds, because the largest numbers overflow as nanoseconds.
  constexpr auto kLast = std::chrono::floor<seconds>(VirtualClock::kLastWall).count() - 1;
  if (wholeSeconds < 0 || wholeSeconds > kLast) {
    errno = EINVAL;
    return -1;
  }
  VirtualClock* clock = processClock();
  if (clock == nullptr) {
    errno = EPERM;
    return -1;
  }
  return clock->setWall(seconds{wholeSeconds} + rest, setter) ? 0 : -1;
}

}  // namespace

ShiftedTime::ShiftedTime(seconds later) noexcept {
  t_later = later;
}

ShiftedTime::~ShiftedTime() {
  t_later = seconds(0);
}

}  // namespace host

extern "C" {

time_t time(time_t* result) noexcept {
  const auto now = host::wallSeconds();
  if (!host::fits<time_t>(now)) {
    errno = EOVERFLOW;
    return -1;
  }
  if (result != nullptr) *result = static_cast<time_t>(now);
  return static_cast<time_t>(now);
}

int settimeofday(const struct timeval* value, const struct timezone* zone) noexcept {
  if (value == nullptr || zone != nullptr || value->tv_usec < 0 || value->tv_usec > 999'999) {
    errno = EINVAL;
    return -1;
  }
  return host::setWall(value->tv_sec, std::chrono::microseconds{value->tv_usec},
                       host::VirtualClock::Setter::seconds);
}

int stime(const time_t* seconds) noexcept {
  if (seconds == nullptr) {
    errno = EINVAL;
    return -1;
  }
  return host::setWall(*seconds, std::chrono::microseconds{0},
                       host::VirtualClock::Setter::savedTime);
}

int sysinfo(struct sysinfo* info) noexcept {
  if (syscall(SYS_sysinfo, info) != 0) return -1;
  if (const host::VirtualClock* clock = host::processClock()) {
    using Uptime = decltype(info->uptime);
    info->uptime = static_cast<Uptime>(
        std::chrono::duration_cast<std::chrono::seconds>(clock->uptime()).count());
  }
  return 0;
}

}  // extern "C"

// Defined here and not in framework: a program that links it then has the calls above too, and
// cannot set the machine's clock with the C library's.
int votk_set_time_seconds_since_epoch(unsigned long secondsSinceEpoch) {
  constexpr auto kMost = std::numeric_limits<time_t>::max();
  if (secondsSinceEpoch > static_cast<unsigned long long>(kMost)) return -1;
  return host::setWall(static_cast<std::chrono::seconds::rep>(secondsSinceEpoch),
                       std::chrono::microseconds{0}, host::VirtualClock::Setter::hand);
}
