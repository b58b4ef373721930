#pragma once

#include <ctime>

// The year that tm_year counts from.
constexpr int kEpochYearOfTm = 1900;

// Local time of these seconds since 1970, under TZ; all zero when the year does not fit a tm.
inline tm localTime(time_t seconds) {
  tm local{};
  localtime_r(&seconds, &local);
  return local;
}
