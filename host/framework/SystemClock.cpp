#include "SystemClock.h"

#include <sys/time.h>

#include <limits>

int votk_set_time_seconds_since_epoch(unsigned long secondsSinceEpoch) {
  constexpr auto kMost = std::numeric_limits<time_t>::max();  // no system clock goes further
  if (secondsSinceEpoch > static_cast<unsigned long long>(kMost)) return -1;
  const timeval time{static_cast<time_t>(secondsSinceEpoch), 0};
  return settimeofday(&time, nullptr);
}
