#include "simulation/model/Civil.h"

#include <array>
#include <cstddef>

namespace simulation {
namespace {

constexpr std::int64_t kDaySeconds = 86400;
constexpr std::array<std::int64_t, 12> kMonthDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

std::int64_t leapDaysBefore(std::int64_t year) {
  const std::int64_t last = year - 1;
  return floorOf(last, 4) - floorOf(last, 100) + floorOf(last, 400);
}

std::int64_t daysBeforeYear(std::int64_t year) {
  return (year - 1970) * 365 + leapDaysBefore(year) - leapDaysBefore(1970);
}

std::int64_t yearOf(std::int64_t days) {
  std::int64_t year = 1970 + floorOf(days * 400, 146097);
  while (daysBeforeYear(year) > days) --year;
  while (daysBeforeYear(year + 1) <= days) ++year;
  return year;
}

}  // namespace

std::int64_t floorOf(std::int64_t dividend, std::int64_t divisor) {
  const std::int64_t quotient = dividend / divisor;
  return dividend % divisor < 0 ? quotient - 1 : quotient;
}

bool isLeapYear(std::int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

std::int64_t daysInMonth(std::int64_t year, std::int64_t month) {
  const std::int64_t usual = kMonthDays[static_cast<std::size_t>(month - 1)];
  return month == 2 && isLeapYear(year) ? usual + 1 : usual;
}

std::int64_t daysTo(std::int64_t year, std::int64_t month, std::int64_t day) {
  const std::int64_t carried = floorOf(month - 1, 12);
  const std::int64_t wholeYear = year + carried;
  std::int64_t days = daysBeforeYear(wholeYear);
  for (std::int64_t m = 1; m < month - carried * 12; ++m) days += daysInMonth(wholeYear, m);
  return days + day - 1;
}

std::int64_t secondsTo(const Civil& reading) {
  const std::int64_t days = daysTo(reading.year, reading.month, reading.day);
  return days * kDaySeconds + reading.hour * 3600 + reading.minute * 60 + reading.second;
}

Civil readingAt(std::int64_t seconds) {
  const std::int64_t days = floorOf(seconds, kDaySeconds);
  const std::int64_t rest = seconds - days * kDaySeconds;
  Civil reading;
  reading.year = yearOf(days);
  std::int64_t left = days - daysBeforeYear(reading.year);
  while (left >= daysInMonth(reading.year, reading.month)) {
    left -= daysInMonth(reading.year, reading.month++);
  }
  reading.day = left + 1;
  reading.hour = rest / 3600;
  reading.minute = rest / 60 % 60;
  reading.second = rest % 60;
  return reading;
}

std::int64_t weekdayOf(std::int64_t days) {
  constexpr std::int64_t thursday = 4;
  const std::int64_t shifted = days + thursday;
  return shifted - floorOf(shifted, 7) * 7;
}

}  // namespace simulation
