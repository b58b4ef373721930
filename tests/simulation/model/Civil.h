#pragma once

#include <cstdint>

namespace simulation {

// A reading of a calendar and a clock. Fields may overflow where a function says so.
struct Civil {
  std::int64_t year = 1970;
  std::int64_t month = 1;  // 1-12
  std::int64_t day = 1;    // 1-31
  std::int64_t hour = 0;
  std::int64_t minute = 0;
  std::int64_t second = 0;

  friend bool operator==(const Civil&, const Civil&) = default;
};

// Days from 1970-01-01. Month and day may overflow.
[[nodiscard]] std::int64_t daysTo(std::int64_t year, std::int64_t month, std::int64_t day);

// Seconds from 1970-01-01 00:00:00, and back. Every field may overflow.
[[nodiscard]] std::int64_t secondsTo(const Civil& reading);
[[nodiscard]] Civil readingAt(std::int64_t seconds);

[[nodiscard]] bool isLeapYear(std::int64_t year);
[[nodiscard]] std::int64_t daysInMonth(std::int64_t year, std::int64_t month);

// 0 is Sunday.
[[nodiscard]] std::int64_t weekdayOf(std::int64_t days);

// Division that rounds down.
[[nodiscard]] std::int64_t floorOf(std::int64_t dividend, std::int64_t divisor);

}  // namespace simulation
