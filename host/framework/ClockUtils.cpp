#include "ClockUtils.h"

#include <chrono>
#include <cstdio>
#include <optional>
#include <string_view>

#include "base/Ascii.h"

namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::sys_days;
using std::chrono::year_month_day;
using Minute = std::chrono::sys_time<minutes>;

// "YYYY-MM-DDThh:mm:ss+hh:mm", with '0' for each digit.
constexpr std::string_view kEastOfUtc = "0000-00-00T00:00:00+00:00";
constexpr std::string_view kWestOfUtc = "0000-00-00T00:00:00-00:00";
constexpr std::size_t kSignAt = 19;
constexpr std::size_t kSecondAt = 17;

// REQUIRES: two digits at `at`.
int pairAt(const std::string& text, std::size_t at) {
  return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

// A pair of hours and minutes, "hh:mm"; empty from 24:00 on. REQUIRES: two digits for each.
std::optional<minutes> hoursAndMinutesAt(const std::string& text, std::size_t at) {
  const int hour = pairAt(text, at);
  const int minute = pairAt(text, at + 3);
  if (hour > 23 || minute > 59) return std::nullopt;
  return hours{hour} + minutes{minute};
}

// The minute in UTC that a text of either shape means; empty when a field is out of range.
std::optional<Minute> utcMinuteOf(const std::string& text) {
  const std::chrono::year year{pairAt(text, 0) * 100 + pairAt(text, 2)};
  const year_month_day date = year / pairAt(text, 5) / pairAt(text, 8);
  const auto time = hoursAndMinutesAt(text, 11);
  const auto offset = hoursAndMinutesAt(text, kSignAt + 1);
  if (!date.ok() || !time || !offset) return std::nullopt;
  return sys_days(date) + *time - (text[kSignAt] == '+' ? *offset : -*offset);
}

tm recordOf(Minute utc, int second) {
  const auto day = std::chrono::floor<days>(utc);
  const year_month_day date(day);
  const std::chrono::hh_mm_ss time(utc - day);
  tm record{};
  record.tm_year = static_cast<int>(date.year()) - 1900;
  record.tm_mon = static_cast<int>(unsigned{date.month()}) - 1;
  record.tm_mday = static_cast<int>(unsigned{date.day()});
  record.tm_hour = static_cast<int>(time.hours().count());
  record.tm_min = static_cast<int>(time.minutes().count());
  record.tm_sec = second;
  record.tm_wday = static_cast<int>(std::chrono::weekday(day).c_encoding());
  record.tm_yday = static_cast<int>((day - sys_days(date.year() / 1 / 1)).count());
  return record;
}

}  // namespace

bool ClockUtils::convertTimeStringToTimeStruct(const std::string& text, tm& utc) {
  if (!host::hasShape(text, kEastOfUtc) && !host::hasShape(text, kWestOfUtc)) return false;
  const auto minute = utcMinuteOf(text);
  const int second = pairAt(text, kSecondAt);
  if (!minute || second > 60) return false;  // 60 is a leap second
  utc = recordOf(*minute, second);
  return true;
}

void ClockUtils::convertTimeStructToTimeString(tm& utc, std::string& text) {
  char buffer[96];  // the widest number takes 11 characters
  const int length = std::snprintf(buffer, sizeof buffer, "%04lld-%02lld-%02dT%02d:%02d:%02d+00:00",
                                   1900LL + utc.tm_year, 1LL + utc.tm_mon, utc.tm_mday, utc.tm_hour,
                                   utc.tm_min, utc.tm_sec);
  text.assign(buffer, static_cast<std::size_t>(length));
}
