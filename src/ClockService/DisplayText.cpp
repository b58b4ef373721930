#include "DisplayText.h"

#include <array>

#include "BoundedPrint.h"

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

// Cut, never grown: 19 characters and the terminator.
using Buffer = std::array<char, 20>;

}  // namespace

std::string DisplayText::time(int hours, int minutes, int timeFormat) {
  Buffer text{};
  if (timeFormat == 0)
    boundedPrint(text, TIME_FORMAT_24, hours, minutes);
  else if (hours < kNoon)
    boundedPrint(text, TIME_FORMAT_AM, hours, minutes);
  else
    boundedPrint(text, TIME_FORMAT_PM, hours == kNoon ? hours : hours - kNoon, minutes);
  return text.data();
}

std::string DisplayText::date(int day, int month, int year, int dateFormat) {
  Buffer text{};
  const int shortYear = year % kYearsPerCentury;
  switch (dateFormat) {
    case 0:
      boundedPrint(text, DATE_FORMAT_DOTS, day, month, shortYear);
      break;
    case 1:
      boundedPrint(text, DATE_FORMAT_DASHES, shortYear, month, day);
      break;
    case 2:
      boundedPrint(text, DATE_FORMAT_SLASHES, month, day, shortYear);
      break;
    default:
      break;
  }
  return text.data();
}

// Format 1 is month-day, the long form without its year, by design.
std::string DisplayText::shortDate(int day, int month, int dateFormat) {
  Buffer text{};
  switch (dateFormat) {
    case 0:
      boundedPrint(text, SHORT_DATE_FORMAT_DOTS, day, month);
      break;
    case 1:
      boundedPrint(text, SHORT_DATE_FORMAT_DASHES, month, day);
      break;
    case 2:
      boundedPrint(text, SHORT_DATE_FORMAT_SLASHES, month, day);
      break;
    default:
      break;
  }
  return text.data();
}
