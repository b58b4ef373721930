#include "simulation/model/Texts.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <limits>

namespace simulation {
namespace {

std::string ofThree(std::int64_t a, std::int64_t b, std::int64_t c, char between) {
  return print("%02lld%c%02lld%c%02lld", static_cast<long long>(a), between,
               static_cast<long long>(b), between, static_cast<long long>(c));
}

// The shape of a UTC text: 'd' stands for a digit, 's' for a sign.
constexpr const char* kUtcShape = "dddd-dd-ddTdd:dd:ddsdd:dd";

bool hasUtcShape(const std::string& text) {
  const std::string shape = kUtcShape;
  if (text.size() != shape.size()) return false;
  return std::equal(text.begin(), text.end(), shape.begin(), [](char c, char wanted) {
    if (wanted == 'd') return c >= '0' && c <= '9';
    return wanted == 's' ? c == '+' || c == '-' : c == wanted;
  });
}

std::int64_t digits(const std::string& text, std::size_t from, std::size_t count) {
  return leadingNumber(text.substr(from, count));
}

bool isOnTheCalendar(const Civil& reading) {
  return reading.month >= 1 && reading.month <= 12 && reading.day >= 1 &&
         reading.day <= daysInMonth(reading.year, reading.month) && reading.hour <= 23 &&
         reading.minute <= 59 && reading.second <= 60;
}

}  // namespace

std::string print(const char* format, ...) {
  char buffer[2048];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer, sizeof buffer, format, arguments);
  va_end(arguments);
  return buffer;
}

std::string timeText(std::int64_t hour, std::int64_t minute, int format) {
  const std::int64_t shown = format != 0 && hour > 12 ? hour - 12 : hour;
  const char* const suffix = format == 0 ? "" : hour < 12 ? "am" : "pm";
  return print("%02d:%02d%s", static_cast<int>(shown), static_cast<int>(minute), suffix);
}

std::string dateText(const Civil& date, int format) {
  const std::int64_t year = date.year % 100;
  if (format == 0) return ofThree(date.day, date.month, year, '.');
  if (format == 1) return ofThree(year, date.month, date.day, '-');
  return format == 2 ? ofThree(date.month, date.day, year, '/') : "";
}

std::string shortDateText(const Civil& date, int format) {
  const int day = static_cast<int>(date.day);
  const int month = static_cast<int>(date.month);
  if (format == 0) return print("%02d.%02d.", day, month);
  if (format == 1) return print("%02d-%02d", month, day);
  return format == 2 ? print("%02d/%02d/", month, day) : "";
}

std::string fullDateText(const Civil& date, int format) {
  const int day = static_cast<int>(date.day);
  const int month = static_cast<int>(date.month);
  const int year = static_cast<int>(date.year);
  if (format == 0) return print("%02d.%02d.%04d", day, month, year);
  if (format == 1) return print("%04d-%02d-%02d", year, month, day);
  return format == 2 ? print("%02d/%02d/%04d", month, day, year) : "";
}

std::string utcText(std::int64_t instant) {
  const Civil utc = readingAt(instant);
  return print("%04d-%02d-%02dT%02d:%02d:%02d+00:00", static_cast<int>(utc.year),
               static_cast<int>(utc.month), static_cast<int>(utc.day), static_cast<int>(utc.hour),
               static_cast<int>(utc.minute), static_cast<int>(utc.second));
}

std::optional<std::int64_t> instantOfUtcText(const std::string& text) {
  if (!hasUtcShape(text)) return std::nullopt;
  const Civil reading{digits(text, 0, 4),  digits(text, 5, 2),  digits(text, 8, 2),
                      digits(text, 11, 2), digits(text, 14, 2), digits(text, 17, 2)};
  const std::int64_t hours = digits(text, 20, 2);
  const std::int64_t minutes = digits(text, 23, 2);
  if (!isOnTheCalendar(reading) || hours > 23 || minutes > 59) return std::nullopt;
  const std::int64_t east = (hours * 60 + minutes) * (text[19] == '-' ? -60 : 60);
  return secondsTo(reading) - east;
}

int leadingNumber(const std::string& text) {
  std::size_t at = text.find_first_not_of(" \t\n\v\f\r");
  if (at == std::string::npos) return 0;
  const bool negative = text[at] == '-';
  if (negative || text[at] == '+') ++at;
  std::int64_t number = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    number = std::min<std::int64_t>(number * 10 + (text[at] - '0'), 1LL << 40);
  }
  return within32(negative ? -number : number);
}

int within32(std::int64_t number) {
  return static_cast<int>(std::clamp<std::int64_t>(number, std::numeric_limits<int>::min(),
                                                   std::numeric_limits<int>::max()));
}

}  // namespace simulation
