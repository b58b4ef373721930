#include "DisplayText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <initializer_list>

namespace {

constexpr char TIME_FORMAT_24[] = "%02d:%02d";
constexpr char TIME_FORMAT_AM[] = "%02d:%02dam";
constexpr char TIME_FORMAT_PM[] = "%02d:%02dpm";
constexpr char DATE_FORMAT_DOTS[] = "%02d.%02d.%02d";
constexpr char DATE_FORMAT_DASHES[] = "%02d-%02d-%02d";
constexpr char DATE_FORMAT_SLASHES[] = "%02d/%02d/%02d";
constexpr char SHORT_DATE_FORMAT_DOTS[] = "%02d.%02d.";
constexpr char SHORT_DATE_FORMAT_DASHES[] = "%02d-%02d";
constexpr char SHORT_DATE_FORMAT_SLASHES[] = "%02d/%02d/";

constexpr int kNoon = 12;
constexpr int kYearsPerCentury = 100;
constexpr std::size_t kLongest = 19;  // characters; a longer text is cut

void appendTwoDigits(std::string& text, int number) {
  if (number >= 0 && number < 10) text += '0';
  std::array<char, 11> digits;  // enough for INT_MIN
  text.append(digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr);
}

// Prints one of the formats above, whose only directive is "%02d". Faster than printf.
std::string print(const char* format, std::initializer_list<int> numbers) {
  std::string text;
  const int* number = numbers.begin();
  while (*format != '\0') {
    if (*format != '%') {
      text += *format++;
      continue;
    }
    appendTwoDigits(text, *number++);
    format += sizeof "%02d" - 1;
  }
  text.resize(std::min(text.size(), kLongest));
  return text;
}

}  // namespace

std::string DisplayText::time(int hours, int minutes, int timeFormat) {
  if (timeFormat == 0) return print(TIME_FORMAT_24, {hours, minutes});
  if (hours < kNoon) return print(TIME_FORMAT_AM, {hours, minutes});
  return print(TIME_FORMAT_PM, {hours == kNoon ? hours : hours - kNoon, minutes});
}

std::string DisplayText::date(int day, int month, int year, int dateFormat) {
  const int shortYear = year % kYearsPerCentury;
  switch (dateFormat) {
    case 0:
      return print(DATE_FORMAT_DOTS, {day, month, shortYear});
    case 1:
      return print(DATE_FORMAT_DASHES, {shortYear, month, day});
    case 2:
      return print(DATE_FORMAT_SLASHES, {month, day, shortYear});
    default:
      return {};
  }
}

// Format 1 is month-day, the long form without its year, by design.
std::string DisplayText::shortDate(int day, int month, int dateFormat) {
  switch (dateFormat) {
    case 0:
      return print(SHORT_DATE_FORMAT_DOTS, {day, month});
    case 1:
      return print(SHORT_DATE_FORMAT_DASHES, {month, day});
    case 2:
      return print(SHORT_DATE_FORMAT_SLASHES, {month, day});
    default:
      return {};
  }
}
