#pragma once

#include <string>

// Times and dates as the telephone shows them. Pure.
namespace DisplayText {

// hours 0-23, minutes 0-59. timeFormat: 0 is 24-hour ("23:59"), anything else 12-hour with "am" or
// "pm"; midnight is hour 00 with "am", never 12.
std::string time(int hours, int minutes, int timeFormat);

// day 1-31, month 1-12, four-digit year; its last two digits are shown.
// dateFormat: 0 "07.03.24", 1 "24-03-07", 2 "03/07/24"; empty for any other.
std::string date(int day, int month, int year, int dateFormat);

// Without the year. dateFormat: 0 "07.03.", 1 "03-07", 2 "03/07/"; empty for any other.
std::string shortDate(int day, int month, int dateFormat);

}  // namespace DisplayText
