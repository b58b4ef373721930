#pragma once

#include <ctime>

// The local record of these seconds since 1970, by TZ; all zero where the year does not fit one.
inline tm localTime(time_t seconds) {
  tm local{};
  localtime_r(&seconds, &local);
  return local;
}
