#include "runtime/ClockSetWatch.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "base/Error.h"

namespace host {

// A timer that never expires, and that the kernel cancels when the clock is set.
Descriptor openClockSetWatch() {
  Descriptor timer(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC));
  itimerspec never{};
  never.it_value.tv_sec = std::numeric_limits<std::int32_t>::max();
  if (sizeof never.it_value.tv_sec > sizeof(std::int32_t)) never.it_value.tv_sec *= 4;
  constexpr int kFlags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
  if (!timer.valid() || ::timerfd_settime(timer.get(), kFlags, &never, nullptr) != 0) {
    throw Error(std::string("cannot watch for programs that set the machine's clock: ") +
                std::strerror(errno));
  }
  return timer;
}

void clearClockSetWatch(int watch) {
  std::uint64_t expiries = 0;
  if (::read(watch, &expiries, sizeof expiries) < 0) {
    // Cancelled: the clock was set.
  }
}

}  // namespace host
