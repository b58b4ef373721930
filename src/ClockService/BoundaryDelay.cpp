#include "BoundaryDelay.h"

#include <cstdint>
#include <limits>

#include "LocalTime.h"
#include "Saturate.h"

namespace {

constexpr int kSecondsPerMinute = 60;
constexpr int kSecondsPerHour = 3600;
constexpr int kSecondsPerDay = 86400;

// From `now` to a later time, at most the longest period of a timer. The unsigned difference
// cannot overflow.
unsigned int milliseconds(time_t now, time_t boundary) {
  constexpr unsigned int kLongest = std::numeric_limits<unsigned int>::max();
  constexpr unsigned int kMillisecondsPerSecond = 1000;
  const std::uint64_t seconds =
      static_cast<std::uint64_t>(boundary) - static_cast<std::uint64_t>(now);
  return seconds > kLongest / kMillisecondsPerSecond
             ? kLongest
             : static_cast<unsigned int>(seconds) * kMillisecondsPerSecond;
}

// mktime fails beyond 2038 where time_t has 32 bits. The delay is then that of a day without a
// daylight-saving change; a delay of 0 would make the timer fire in a loop.
unsigned int milliseconds(time_t now, time_t boundary, int usualSeconds) {
  const bool usable = boundary != static_cast<time_t>(-1) && boundary > now;
  return usable ? milliseconds(now, boundary) : milliseconds(0, usualSeconds);
}

int secondsOfHour(const tm& local) {
  return local.tm_min * kSecondsPerMinute + local.tm_sec;
}

}  // namespace

unsigned int BoundaryDelay::toNextHour(time_t now) {
  tm local = localTime(now);
  const int usual = kSecondsPerHour - secondsOfHour(local);
  local.tm_hour += 1;
  local.tm_min = 0;
  local.tm_sec = 0;
  return milliseconds(now, mktime(&local), usual);
}

unsigned int BoundaryDelay::toNextMidnight(time_t now) {
  tm local = localTime(now);
  const int usual = kSecondsPerDay - local.tm_hour * kSecondsPerHour - secondsOfHour(local);
  local.tm_mday += 1;
  local.tm_hour = 0;
  local.tm_min = 0;
  local.tm_sec = 0;
  return milliseconds(now, mktime(&local), usual);
}

int BoundaryDelay::localDay(time_t now) {
  const tm local = localTime(now);
  return dateNumber(local.tm_mday, local.tm_mon + 1, saturatedSum(local.tm_year, kEpochYearOfTm));
}

int BoundaryDelay::dateNumber(int day, int month, int year) {
  return saturate<int>(std::int64_t{year} * 10000 + month * 100 + day);
}
