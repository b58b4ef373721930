#include "ClockUtils.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "base/Ascii.h"

namespace {

// Layout: YYYY-MM-DDThh:mm:ss+hh:mm, '0' for each digit.
constexpr std::string_view kEastOfUtc = "0000-00-00T00:00:00+00:00";
constexpr std::string_view kWestOfUtc = "0000-00-00T00:00:00-00:00";
constexpr std::size_t kSignAt = 19;
constexpr int kMinutesPerDay = 24 * 60;

struct Fields {
  int year, month, day, hour, minute, second, offsetHours, offsetMinutes;
};

bool isUtcString(const std::string& text) {
  return host::hasShape(text, kEastOfUtc) || host::hasShape(text, kWestOfUtc);
}

// REQUIRES: two digits at `at`.
int pairAt(const std::string& text, std::size_t at) {
  return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

Fields fieldsOf(const std::string& text) {
  return {pairAt(text, 0) * 100 + pairAt(text, 2),
          pairAt(text, 5),
          pairAt(text, 8),
          pairAt(text, 11),
          pairAt(text, 14),
          pairAt(text, 17),
          pairAt(text, 20),
          pairAt(text, 23)};
}

bool isLeap(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysIn(int year, int month) {
  constexpr std::array<int, 13> kDays{0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeap(year) ? 29 : kDays[static_cast<std::size_t>(month)];
}

// Second 60 is a leap second.
bool inRange(const Fields& f) {
  return f.month >= 1 && f.month <= 12 && f.day >= 1 && f.day <= daysIn(f.year, f.month) &&
         f.hour <= 23 && f.minute <= 59 && f.second <= 60 && f.offsetHours <= 23 &&
         f.offsetMinutes <= 59;
}

void stepDay(Fields& f, int step) {
  f.day += step;
  if (f.day < 1) {
    if (--f.month < 1) {
      f.month = 12;
      --f.year;
    }
    f.day = daysIn(f.year, f.month);
  } else if (f.day > daysIn(f.year, f.month)) {
    f.day = 1;
    if (++f.month > 12) {
      f.month = 1;
      ++f.year;
    }
  }
}

// Subtracts the offset, which is less than a day: the fields are then UTC.
void toUtc(Fields& f, char sign) {
  const int offset = f.offsetHours * 60 + f.offsetMinutes;
  int minutes = f.hour * 60 + f.minute + (sign == '+' ? -offset : offset);
  if (minutes < 0) {
    minutes += kMinutesPerDay;
    stepDay(f, -1);
  } else if (minutes >= kMinutesPerDay) {
    minutes -= kMinutesPerDay;
    stepDay(f, 1);
  }
  f.hour = minutes / 60;
  f.minute = minutes % 60;
}

int dayOfYear(const Fields& f) {
  int days = f.day - 1;
  for (int month = 1; month < f.month; ++month) days += daysIn(f.year, month);
  return days;
}

// 0 is Sunday. Years -1 to 10000, shifted by a whole calendar cycle so that they are positive.
int weekday(const Fields& f) {
  const int before = f.year + 400 - 1;
  const int days = before * 365 + before / 4 - before / 100 + before / 400 + dayOfYear(f);
  return (days + 1) % 7;  // 0001-01-01 was a Monday
}

tm recordOf(const Fields& f) {
  tm record{};
  record.tm_year = f.year - 1900;
  record.tm_mon = f.month - 1;
  record.tm_mday = f.day;
  record.tm_hour = f.hour;
  record.tm_min = f.minute;
  record.tm_sec = f.second;
  record.tm_wday = weekday(f);
  record.tm_yday = dayOfYear(f);
  return record;
}

bool isPair(int number) {
  return number >= 0 && number <= 99;
}

void putPair(char* at, int number) {
  at[0] = static_cast<char>('0' + number / 10);
  at[1] = static_cast<char>('0' + number % 10);
}

// For the usual record, whose fields fit their places: much faster than printf.
bool putFields(const tm& utc, std::int64_t year, char (&buffer)[kEastOfUtc.size()]) {
  if (year < 0 || year > 9999 || utc.tm_mon < 0 || utc.tm_mon > 98 || !isPair(utc.tm_mday) ||
      !isPair(utc.tm_hour) || !isPair(utc.tm_min) || !isPair(utc.tm_sec)) {
    return false;
  }
  for (std::size_t i = 0; i < kEastOfUtc.size(); ++i) buffer[i] = kEastOfUtc[i];
  putPair(buffer, static_cast<int>(year / 100));
  putPair(buffer + 2, static_cast<int>(year % 100));
  putPair(buffer + 5, utc.tm_mon + 1);
  putPair(buffer + 8, utc.tm_mday);
  putPair(buffer + 11, utc.tm_hour);
  putPair(buffer + 14, utc.tm_min);
  putPair(buffer + 17, utc.tm_sec);
  buffer[kSignAt] = '+';
  return true;
}

// For any record; the widest number takes 11 characters, so nothing is truncated.
std::string printedFields(const tm& utc, std::int64_t year) {
  char buffer[96];
  const std::int64_t month = std::int64_t{utc.tm_mon} + 1;
  const int length = std::snprintf(buffer, sizeof buffer, "%04lld-%02lld-%02dT%02d:%02d:%02d+00:00",
                                   static_cast<long long>(year), static_cast<long long>(month),
                                   utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
  return {buffer, static_cast<std::size_t>(length)};
}

}  // namespace

bool ClockUtils::convertTimeStringToTimeStruct(const std::string& text, tm& utc) {
  if (!isUtcString(text)) return false;
  Fields fields = fieldsOf(text);
  if (!inRange(fields)) return false;
  toUtc(fields, text[kSignAt]);
  utc = recordOf(fields);
  return true;
}

void ClockUtils::convertTimeStructToTimeString(tm& utc, std::string& text) {
  const std::int64_t year = std::int64_t{utc.tm_year} + 1900;
  char buffer[kEastOfUtc.size()];
  if (putFields(utc, year, buffer)) {
    text.assign(buffer, kEastOfUtc.size());
  } else {
    text = printedFields(utc, year);
  }
}
