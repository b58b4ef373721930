#pragma once

#include <ctime>

// The device's system clock, in UTC. `time` reads the same clock and `settimeofday` sets it.
// Setting it moves neither the uptime that `sysinfo` tells nor the timers.

// Sets the device's system clock. Returns 0, or a negative number on failure.
int votk_set_time_seconds_since_epoch(unsigned long secondsSinceEpoch);

// SVr4 stime, which some C libraries no longer declare: sets the system clock to *seconds since
// 1970-01-01 UTC. Returns 0, or -1 with errno. Provided by the process that loads the plug-in.
extern "C" int stime(const time_t* seconds) noexcept;
