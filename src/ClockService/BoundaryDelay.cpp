#include "BoundaryDelay.h"

#include <cstdint>

#include "LocalTime.h"
#include "Saturate.h"

namespace {

constexpr int secondsPerMinute = 60;
constexpr int secondsPerHour = 3600;
constexpr int secondsPerDay = 86400;
constexpr std::int64_t millisecondsPerSecond = 1000;

// mktime fails beyond 2038 where time_t has 32 bits. The boundary is then where it would be on a
// day without a change of the clock, so that no timer is due at once and over again.
unsigned int milliseconds(time_t now, time_t boundary, int usualSeconds) {
  const bool usable = boundary != static_cast<time_t>(-1) && boundary > now;
  const std::int64_t seconds =
      usable ? static_cast<std::int64_t>(boundary) - static_cast<std::int64_t>(now) : usualSeconds;
  return saturate<unsigned int>(seconds * millisecondsPerSecond);
}

int secondsOfHour(const tm& local) {
  return local.tm_min * secondsPerMinute + local.tm_sec;
}

}  // namespace

unsigned int BoundaryDelay::toNextHour(time_t now) {
  tm local = localTime(now);
  const int usual = secondsPerHour - secondsOfHour(local);
  local.tm_hour += 1;
  local.tm_min = 0;
  local.tm_sec = 0;
  return milliseconds(now, mktime(&local), usual);
}

unsigned int BoundaryDelay::toNextMidnight(time_t now) {
  tm local = localTime(now);
  const int usual = secondsPerDay - local.tm_hour * secondsPerHour - secondsOfHour(local);
  local.tm_mday += 1;
  local.tm_hour = 0;
  local.tm_min = 0;
  local.tm_sec = 0;
  return milliseconds(now, mktime(&local), usual);
}

int BoundaryDelay::localDay(time_t now) {
  const tm local = localTime(now);
  return (local.tm_year + 1900) * 10000 + (local.tm_mon + 1) * 100 + local.tm_mday;
}
