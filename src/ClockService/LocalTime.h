#pragma once

#include <ctime>

// The year that tm_year counts from.
constexpr int epochYearOfTm = 1900;

// The local record of these seconds since 1970, by TZ; all zero where the year does not fit one.
inline tm localTime(time_t seconds) {
  tm local{};
  localtime_r(&seconds, &local);
  return local;
}
