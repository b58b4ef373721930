#include "plugin/IndependentZones.h"

#include <algorithm>
#include <cstdio>

namespace independent {

namespace {

namespace chr = std::chrono;

constexpr Seconds kMinute = 60;
constexpr Seconds kHour = 3600;
constexpr Seconds kDay = 86400;

std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
  return a / b - (a % b < 0 ? 1 : 0);
}
std::int64_t floorMod(std::int64_t a, std::int64_t b) {
  return a - floorDiv(a, b) * b;
}

chr::sys_days sundayOf(std::int64_t year, const Change& change) {
  const auto month = chr::year(static_cast<int>(year)) / chr::month(change.month);
  if (change.which == Sunday::last) return month / chr::Sunday[chr::last];
  return month / chr::Sunday[static_cast<unsigned int>(change.which) + 1];
}

// In seconds since 1970-01-01, in the local time that is valid before the change.
Seconds localMoment(std::int64_t year, const Change& change) {
  return sundayOf(year, change).time_since_epoch().count() * kDay + change.hour * kHour +
         change.minute * kMinute;
}

}  // namespace

chr::year_month_day dateOf(std::int64_t daysSince1970) {
  return chr::sys_days(chr::days(daysSince1970));
}

Seconds secondsOf(const std::string& utc) {
  const auto number = [&utc](std::size_t position, std::size_t length) {
    return std::stoi(utc.substr(position, length));
  };
  const chr::sys_days date = chr::year(number(0, 4)) / number(5, 2) / number(8, 2);
  return date.time_since_epoch().count() * kDay + number(11, 2) * kHour + number(14, 2) * kMinute +
         number(17, 2);
}

std::string utcOf(Seconds instant) {
  const chr::year_month_day date = dateOf(floorDiv(instant, kDay));
  const auto rest = static_cast<int>(floorMod(instant, kDay));
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d",
                static_cast<int>(date.year()), static_cast<unsigned int>(date.month()),
                static_cast<unsigned int>(date.day()), rest / 3600, rest / 60 % 60, rest % 60);
  return text.data();
}

// The rules that the identifiers stand for, with the local time of each change.
const std::array<Zone, 15>& zones() {
  using S = Sunday;
  static const std::array<Zone, 15> all{{
      {0, false, {}, {}},                                      // not set
      {1, true, {S::last, 10, 2, 0}, {S::first, 4, 3, 0}},     // Australia 2007, most states
      {2, true, {S::last, 10, 2, 0}, {S::last, 3, 3, 0}},      // New South Wales 2007
      {3, true, {S::last, 10, 2, 0}, {S::last, 3, 3, 0}},      // Western Australia
      {4, true, {S::first, 10, 2, 0}, {S::first, 4, 3, 0}},    // Australia since 2008
      {5, true, {S::third, 10, 0, 0}, {S::third, 2, 0, 0}},    // Brazil: at midnight
      {6, true, {S::second, 3, 2, 0}, {S::first, 11, 2, 0}},   // Canada
      {7, true, {S::second, 3, 0, 0}, {S::first, 11, 0, 0}},   // Newfoundland: at midnight
      {8, true, {S::last, 3, 1, 0}, {S::last, 10, 2, 0}},      // Portugal, United Kingdom
      {9, true, {S::last, 3, 2, 0}, {S::last, 10, 3, 0}},      // central Europe
      {10, true, {S::last, 3, 3, 0}, {S::last, 10, 4, 0}},     // Finland
      {11, true, {S::first, 4, 2, 0}, {S::last, 10, 2, 0}},    // Mexico
      {12, true, {S::second, 3, 2, 0}, {S::first, 11, 2, 0}},  // United States
      {13, true, {S::last, 9, 2, 0}, {S::first, 4, 3, 0}},     // New Zealand
      {14, true, {S::last, 9, 2, 45}, {S::first, 4, 3, 45}},   // Chatham
  }};
  return all;
}

// An offset of standard time of less than an hour east of UTC loses its sign; that of daylight time
// keeps it. So the two can differ by more than the shift.
WallClock::WallClock(const Choice& choice) {
  const Zone& zone = zones().at(static_cast<std::size_t>(choice.zone));
  const bool ruled = choice.daylight && choice.automatic && zone.changes;
  const Seconds wanted = choice.minutesEast * kMinute;
  const Seconds shifted = (choice.minutesEast + choice.shift) * kMinute;
  const bool sideLost = wanted > 0 && wanted < kHour && (ruled || !choice.daylight);
  m_standard = sideLost ? -wanted : wanted;
  m_daylight = shifted;
  m_textOffset = wanted;
  if (choice.daylight && !ruled) m_standard = m_textOffset = shifted;
  for (std::size_t i = 0; ruled && i < kYears; ++i) {
    const std::int64_t year = kFirstYear + static_cast<std::int64_t>(i);
    m_years.push_back({localMoment(year, zone.toDaylight) - m_standard,
                       localMoment(year, zone.toStandard) - m_daylight});
  }
}

bool WallClock::isDaylight(Seconds instant) const {
  if (m_years.empty()) return false;
  const auto year = static_cast<int>(dateOf(floorDiv(instant, kDay)).year());
  const auto& [forward, back] = m_years.at(static_cast<std::size_t>(year - kFirstYear));
  const bool north = forward < back;
  return north ? instant >= forward && instant < back : instant >= forward || instant < back;
}

Seconds WallClock::offsetAt(Seconds instant) const {
  return isDaylight(instant) ? m_daylight : m_standard;
}

// The service adds the offset of standard time in minutes, and then the daylight minutes that the
// rule adds at this instant.
std::string WallClock::faceForText(Seconds instant) const {
  return faceAt(instant + m_textOffset - m_standard);
}

std::vector<Seconds> WallClock::changesIn(std::int64_t year) const {
  if (m_years.empty()) return {};
  const auto& [forward, back] = m_years.at(static_cast<std::size_t>(year - kFirstYear));
  return {std::min(forward, back), std::max(forward, back)};
}

Seconds WallClock::nextHour(Seconds now) const {
  return now + kHour - floorMod(localAt(now), kHour);
}

std::int64_t WallClock::localDay(Seconds instant) const {
  return floorDiv(localAt(instant), kDay);
}

}  // namespace independent
