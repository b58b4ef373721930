// UTC texts: an accepted text is an instant of the calendar, and can be printed and read back. Any
// record can be printed.

#include <chrono>
#include <ctime>

#include "ClockUtils.h"
#include "fuzz/Property.h"

namespace {

using fuzz::hold;

constexpr std::size_t kLength = 25;

bool same(const tm& one, const tm& other) {
  return one.tm_year == other.tm_year && one.tm_mon == other.tm_mon &&
         one.tm_mday == other.tm_mday && one.tm_hour == other.tm_hour &&
         one.tm_min == other.tm_min && one.tm_sec == other.tm_sec && one.tm_wday == other.tm_wday &&
         one.tm_yday == other.tm_yday && one.tm_isdst == other.tm_isdst;
}

int digits(std::string_view text, std::size_t at, std::size_t count) {
  int number = 0;
  for (const char c : text.substr(at, count)) number = number * 10 + (c - '0');
  return number;
}

// REQUIRES: a text of the valid form.
time_t instantOf(std::string_view text) {
  const int east = (digits(text, 20, 2) * 60 + digits(text, 23, 2)) * 60;
  const int time = (digits(text, 11, 2) * 60 + digits(text, 14, 2)) * 60 + digits(text, 17, 2);
  const std::chrono::sys_days day =
      std::chrono::year(digits(text, 0, 4)) / digits(text, 5, 2) / digits(text, 8, 2);
  const auto local = std::chrono::sys_seconds(day).time_since_epoch().count() + time;
  return text[19] == '+' ? local - east : local + east;
}

// Checks also that timegm changes nothing in the record, except for a leap second.
void holdRecord(const tm& record, std::string_view text) {
  tm normal = record;
  hold(timegm(&normal) == instantOf(text), "a text is read as its instant", text);
  hold(record.tm_sec == 60 || same(normal, record), "a record holds a calendar date", text);
}

void holdReadBack(tm record, std::string_view text) {
  std::string printed;
  ClockUtils::convertTimeStructToTimeString(record, printed);
  tm again{};
  const bool read = ClockUtils::convertTimeStringToTimeStruct(printed, again);
  const int year = record.tm_year + 1900;
  hold(read == (year >= 0 && year <= 9999), "exactly years of four digits can be read back", text);
  hold(!read || same(record, again), "a printed record is read back unchanged", text);
}

void holdText(const std::string& text) {
  tm untouched{};
  untouched.tm_year = 77;
  tm record = untouched;
  if (!ClockUtils::convertTimeStringToTimeStruct(text, record)) {
    hold(same(record, untouched), "a refused text changes nothing", text);
    return;
  }
  hold(text.size() == kLength, "a text has 25 characters", text);
  holdRecord(record, text);
  holdReadBack(record, text);
}

void holdPrinting(fuzz::Reader numbers) {
  tm record{};
  for (int* const field : {&record.tm_year, &record.tm_mon, &record.tm_mday, &record.tm_hour,
                           &record.tm_min, &record.tm_sec})
    *field = numbers.number<int>();
  std::string text;
  ClockUtils::convertTimeStructToTimeString(record, text);
  hold(text.size() >= kLength && text.size() < 96, "every record can be printed", text);
  hold(text.ends_with("+00:00"), "a printed time is UTC", text);
}

}  // namespace

// Uses the same bytes as a text and as the fields of a record.
void fuzz::property(std::string_view input) {
  holdText(std::string(input));
  holdPrinting(Reader(input));
}
