#include "verbs/Landmarks.h"

#include <cstdint>
#include <limits>

namespace host {
namespace {

constexpr time_t kMinute = 60;
constexpr time_t kHour = 3600;
constexpr time_t kDay = 86400;

tm localTime(time_t instant) {
  tm local{};
  localtime_r(&instant, &local);
  return local;
}

bool fullHour(time_t instant) {
  const tm local = localTime(instant);
  return local.tm_min == 0 && local.tm_sec == 0;
}

// A local date begins: at 00:00, or later where the clock is put forward at midnight.
bool dateBegins(time_t instant) {
  const tm before = localTime(instant - 1);
  const tm after = localTime(instant);
  return before.tm_year != after.tm_year ? before.tm_year < after.tm_year
                                         : before.tm_yday < after.tm_yday;
}

bool sameZone(time_t left, time_t right) {
  const tm a = localTime(left);
  const tm b = localTime(right);
  return a.tm_gmtoff == b.tm_gmtoff && a.tm_isdst == b.tm_isdst;
}

// Local zones are whole minutes away from UTC, so every boundary falls on a full minute.
template <typename Predicate>
std::optional<time_t> firstMinute(time_t after, time_t limit, Predicate wanted) {
  for (time_t at = after - after % kMinute + kMinute; at <= limit; at += kMinute) {
    if (wanted(at)) return at;
  }
  return std::nullopt;
}

std::optional<time_t> nextFullHour(time_t after) {
  return firstMinute(after, after + 3 * kHour, fullHour);
}

std::optional<time_t> nextMidnight(time_t after) {
  return firstMinute(after, after + 2 * kDay, dateBegins);
}

std::optional<time_t> nextZoneChange(time_t after) {
  constexpr time_t kStep = 6 * kHour;  // no zone changes twice within it
  if (daylight == 0)
    return std::nullopt;  // the C library's variable: 0 when TZ has no daylight saving
  for (time_t low = after; low < after + 731 * kDay; low += kStep) {
    time_t high = low + kStep;
    if (sameZone(low, high)) continue;
    while (high - low > 1) {
      const time_t middle = low + (high - low) / 2;
      (sameZone(low, middle) ? low : high) = middle;
    }
    return high;
  }
  return std::nullopt;
}

std::optional<time_t> nextLeapDay(time_t after) {
  const int year = localTime(after).tm_year;
  for (int candidate = year; candidate <= year + 8; ++candidate) {
    tm day{};
    day.tm_year = candidate;
    day.tm_mon = 1;
    day.tm_mday = 29;
    day.tm_isdst = -1;
    const time_t instant = mktime(&day);
    if (day.tm_mon == 1 && instant > after) return instant;
  }
  return std::nullopt;
}

std::optional<time_t> endOf32Bits(time_t after) {
  constexpr time_t kEnd = std::numeric_limits<std::int32_t>::max();
  return kEnd > after ? std::optional(kEnd) : std::nullopt;
}

constexpr const char* kEarlier =
    "take the clock to an earlier time with `clock jump`, or with `set time` when it was set by "
    "hand";

constexpr Landmark kLandmarks[] = {
    {"hour", "the next full hour", "no full hour was found in the 3 hours after", kEarlier,
     nextFullHour},
    {"midnight", "the next local midnight", "no local midnight was found in the 2 days after",
     kEarlier, nextMidnight},
    {"dst", "the next change to or from daylight saving",
     "no change to or from daylight saving was found in the 2 years after",
     "choose a zone that has one: set `daylight-save-zone-id`, and `daylight-save` and "
     "`auto-daylight-save` to true",
     nextZoneChange},
    {"leap-day", "the next leap day", "no leap day was found in the 8 years after", kEarlier,
     nextLeapDay},
    {"2038", "the end of 32-bit time, 2038-01-19T03:14:07Z",
     "the end of 32-bit time, 2038-01-19T03:14:07Z, is not ahead of", kEarlier, endOf32Bits},
};

}  // namespace

std::span<const Landmark> landmarks() {
  return kLandmarks;
}

std::optional<time_t> nextLandmark(const Landmark& landmark, time_t now) {
  return landmark.next(now + kJumpMargin.count());
}

}  // namespace host
