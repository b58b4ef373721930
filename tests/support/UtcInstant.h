#pragma once

#include <cstdint>
#include <ctime>

namespace support {

// Days from 1970-01-01 to a date of the Gregorian calendar. month 1-12, day 1-31; the year counts
// from March here, so that a leap day is its last.
constexpr std::int64_t daysSinceEpoch(int year, int month, int day) {
  const std::int64_t years = year - (month <= 2 ? 1 : 0);
  const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  constexpr std::int64_t kDaysToEpoch = 719468;
  return 365 * years + years / 4 - years / 100 + years / 400 + dayOfYear - kDaysToEpoch;
}

// Seconds since 1970-01-01 UTC, computed without the C library, as a reference for tests.
constexpr time_t utcInstant(int year, int month, int day, int hours = 0, int minutes = 0,
                            int seconds = 0) {
  return static_cast<time_t>(((daysSinceEpoch(year, month, day) * 24 + hours) * 60 + minutes) * 60 +
                             seconds);
}

static_assert(utcInstant(1970, 1, 1) == 0 && utcInstant(2000, 3, 1) == 951868800);
static_assert(utcInstant(2038, 1, 19, 3, 14, 7) == 2147483647);

}  // namespace support
