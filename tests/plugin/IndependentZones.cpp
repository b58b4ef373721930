#include "plugin/IndependentZones.h"

#include <algorithm>

namespace independent {

namespace {

constexpr Seconds kMinute = 60;
constexpr Seconds kHour = 3600;
constexpr Seconds kDay = 86400;

std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
  return a / b - (a % b < 0 ? 1 : 0);
}
std::int64_t floorMod(std::int64_t a, std::int64_t b) {
  return a - floorDiv(a, b) * b;
}

bool isLeap(std::int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysIn(std::int64_t year, int month) {
  constexpr std::array<int, 12> kLengths{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return kLengths.at(static_cast<std::size_t>(month - 1)) + (month == 2 && isLeap(year) ? 1 : 0);
}

// Leap days before the first of January of a year, counted from year 1.
std::int64_t leapDaysBefore(std::int64_t year) {
  const std::int64_t past = year - 1;
  return floorDiv(past, 4) - floorDiv(past, 100) + floorDiv(past, 400);
}

std::int64_t newYearsDay(std::int64_t year) {
  return (year - 1970) * 365 + leapDaysBefore(year) - leapDaysBefore(1970);
}

// 1970-01-01 was a Thursday, so day 3 a Sunday.
bool isSunday(std::int64_t day) {
  return floorMod(day - 3, 7) == 0;
}

std::int64_t sundayOf(std::int64_t year, const Change& change) {
  std::vector<std::int64_t> sundays;
  for (int day = 1; day <= daysIn(year, change.month); ++day) {
    const std::int64_t number = dayOf({year, change.month, day});
    if (isSunday(number)) sundays.push_back(number);
  }
  if (change.which == Sunday::last) return sundays.back();
  return sundays.at(static_cast<std::size_t>(change.which));
}

// On the clock that is shown until the change.
Seconds localMoment(std::int64_t year, const Change& change) {
  return sundayOf(year, change) * kDay + change.hour * kHour + change.minute * kMinute;
}

std::string digits(std::int64_t number, std::size_t width) {
  std::string text = std::to_string(number);
  return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

int number(const std::string& text, std::size_t position, std::size_t length) {
  return std::stoi(text.substr(position, length));
}

}  // namespace

std::int64_t dayOf(const Date& date) {
  std::int64_t day = newYearsDay(date.year) + date.day - 1;
  for (int month = 1; month < date.month; ++month) day += daysIn(date.year, month);
  return day;
}

Date dateOf(std::int64_t day) {
  std::int64_t year = 1970 + floorDiv(day, 365);
  while (newYearsDay(year) > day) --year;
  while (newYearsDay(year + 1) <= day) ++year;
  int month = 1;
  std::int64_t rest = day - newYearsDay(year);
  while (rest >= daysIn(year, month)) rest -= daysIn(year, month++);
  return {year, month, static_cast<int>(rest) + 1};
}

Seconds secondsOf(const std::string& utc) {
  const Date date{number(utc, 0, 4), number(utc, 5, 2), number(utc, 8, 2)};
  return dayOf(date) * kDay + number(utc, 11, 2) * kHour + number(utc, 14, 2) * kMinute +
         number(utc, 17, 2);
}

std::string utcOf(Seconds instant) {
  const Date date = dateOf(floorDiv(instant, kDay));
  const Seconds rest = floorMod(instant, kDay);
  return digits(date.year, 4) + "-" + digits(date.month, 2) + "-" + digits(date.day, 2) + "T" +
         digits(rest / kHour, 2) + ":" + digits(rest / kMinute % 60, 2) + ":" +
         digits(rest % kMinute, 2);
}

// The rules in words, as a user would look them up.
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

// Standard time less than an hour off UTC is kept as "west", whichever side was meant; daylight
// time keeps its side. So the two can be more than the shift apart.
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

// `instant` counts as daylight time when the clock has been put forward and not yet back.
bool WallClock::isDaylight(Seconds instant) const {
  if (m_years.empty()) return false;
  const std::int64_t year = dateOf(floorDiv(instant, kDay)).year;
  const auto& [forward, back] = m_years.at(static_cast<std::size_t>(year - kFirstYear));
  const bool north = forward < back;
  return north ? instant >= forward && instant < back : instant >= forward || instant < back;
}

Seconds WallClock::offsetAt(Seconds instant) const {
  return isDaylight(instant) ? m_daylight : m_standard;
}

// The text is moved to standard time and read as such; what the rule adds comes on top.
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

Seconds WallClock::nextMidnight(Seconds now) const {
  return now + kDay - floorMod(localAt(now), kDay);
}

std::int64_t WallClock::localDay(Seconds instant) const {
  return floorDiv(localAt(instant), kDay);
}

}  // namespace independent
