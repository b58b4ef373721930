#include "verbs/Landmarks.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace host {
namespace {

constexpr const char* kEarlier =
    "take the clock to an earlier time with `clock jump`, or with `set time` when it was set by "
    "hand";

constexpr LandmarkName kLandmarks[] = {
    {"hour", Landmark::hour, "the next full hour", "no full hour was found in the 3 hours after",
     kEarlier},
    {"midnight", Landmark::midnight, "the next local midnight",
     "no local midnight was found in the 2 days after", kEarlier},
    {"dst", Landmark::dst, "the next change to or from daylight saving",
     "no change to or from daylight saving was found in the 2 years after",
     "choose a zone that has one: set `daylight-save-zone-id`, and `daylight-save` and "
     "`auto-daylight-save` to true"},
    {"leap-day", Landmark::leapDay, "the next leap day",
     "no leap day was found in the 8 years after", kEarlier},
    {"2038", Landmark::year2038, "the end of 32-bit time, 2038-01-19T03:14:07Z",
     "the end of 32-bit time, 2038-01-19T03:14:07Z, is not ahead of", kEarlier},
};

constexpr time_t kMinute = 60;
constexpr time_t kHour = 3600;
constexpr time_t kDay = 86400;
constexpr time_t kEndOf32Bits = std::numeric_limits<std::int32_t>::max();

tm localTime(time_t instant) {
  tm local{};
  localtime_r(&instant, &local);
  return local;
}

bool fullHour(time_t instant) {
  const tm local = localTime(instant);
  return local.tm_min == 0 && local.tm_sec == 0;
}

// The local date goes on: at 00:00, or later where the clock is put forward at midnight.
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

std::optional<time_t> nextZoneChange(time_t after) {
  constexpr time_t kStep = 6 * kHour;  // no zone changes twice within it
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

}  // namespace

std::span<const LandmarkName> landmarkNames() {
  return kLandmarks;
}

const LandmarkName* findLandmark(std::string_view name) {
  const auto found = std::find_if(std::begin(kLandmarks), std::end(kLandmarks),
                                  [&](const LandmarkName& row) { return row.name == name; });
  return found == std::end(kLandmarks) ? nullptr : &*found;
}

std::optional<time_t> nextLandmark(Landmark landmark, time_t now) {
  const time_t after = now + kJumpMargin.count();
  switch (landmark) {
    case Landmark::hour:
      return firstMinute(after, after + 3 * kHour, fullHour);
    case Landmark::midnight:
      return firstMinute(after, after + 2 * kDay, dateBegins);
    case Landmark::dst:
      return nextZoneChange(after);
    case Landmark::leapDay:
      return nextLeapDay(after);
    case Landmark::year2038:
      return kEndOf32Bits > after ? std::optional(kEndOf32Bits) : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace host
