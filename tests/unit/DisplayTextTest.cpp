#include "ClockService/DisplayText.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>

namespace {

TEST(DisplayText, TimeHasTwoDigitHoursAndASuffixInTwelveHourFormat) {
  const struct {
    int hours;
    int minutes;
    const char* twentyFour;
    const char* twelve;
  } table[] = {
      {0, 0, "00:00", "00:00am"},   {0, 5, "00:05", "00:05am"},  // midnight is hour 0
      {0, 59, "00:59", "00:59am"},  {1, 0, "01:00", "01:00am"},   {9, 7, "09:07", "09:07am"},
      {10, 10, "10:10", "10:10am"}, {11, 59, "11:59", "11:59am"}, {12, 0, "12:00", "12:00pm"},
      {12, 59, "12:59", "12:59pm"}, {13, 0, "13:00", "01:00pm"},  {13, 7, "13:07", "01:07pm"},
      {22, 10, "22:10", "10:10pm"}, {23, 0, "23:00", "11:00pm"},  {23, 59, "23:59", "11:59pm"}};
  for (const auto& row : table) {
    EXPECT_EQ(DisplayText::time(row.hours, row.minutes, 0), row.twentyFour);
    for (const int format : {1, 2, -1, 24, INT_MAX, INT_MIN})
      EXPECT_EQ(DisplayText::time(row.hours, row.minutes, format), row.twelve) << format;
  }
}

TEST(DisplayText, DateFollowsItsFormat) {
  const struct {
    int day, month, year, format;
    const char* date;
    const char* shortDate;
  } table[] = {{7, 3, 2024, 0, "07.03.24", "07.03."},
               {7, 3, 2024, 1, "24-03-07", "03-07"},
               {7, 3, 2024, 2, "03/07/24", "03/07/"},
               {31, 12, 2037, 0, "31.12.37", "31.12."},
               {31, 12, 2037, 1, "37-12-31", "12-31"},
               {31, 12, 2037, 2, "12/31/37", "12/31/"},
               {1, 2, 2005, 0, "01.02.05", "01.02."},
               {1, 2, 2000, 0, "01.02.00", "01.02."},
               {1, 2, 1999, 0, "01.02.99", "01.02."},
               {1, 2, 1970, 0, "01.02.70", "01.02."},
               {1, 2, 2100, 0, "01.02.00", "01.02."},
               {1, 2, 2010, 0, "01.02.10", "01.02."},
               {7, 3, 2024, -1, "", ""},
               {7, 3, 2024, 3, "", ""},
               {7, 3, 2024, INT_MAX, "", ""},
               {7, 3, 2024, INT_MIN, "", ""}};
  for (const auto& row : table) {
    EXPECT_EQ(DisplayText::date(row.day, row.month, row.year, row.format), row.date) << row.format;
    EXPECT_EQ(DisplayText::shortDate(row.day, row.month, row.format), row.shortDate) << row.format;
  }
}

TEST(DisplayText, PrintsAnyNumberAsPrintfDoes) {
  const int numbers[] = {INT_MIN, -100, -99, -10, -9, -1, 0, 1, 9, 10, 11, 99, 100, 101, INT_MAX};
  for (const int day : numbers) {
    for (const int month : numbers) {
      for (const int year : numbers) {
        char expected[20];
        snprintf(expected, sizeof expected, "%02d.%02d.%02d", day, month, year % 100);
        ASSERT_EQ(DisplayText::date(day, month, year, 0), expected);
      }
    }
  }
}

TEST(DisplayText, LongerTextIsCutAtNineteenCharacters) {
  EXPECT_EQ(DisplayText::time(INT_MIN, INT_MIN, 0), "-2147483648:-214748");
  EXPECT_EQ(DisplayText::time(INT_MIN, INT_MIN, 1), "-2147483648:-214748");
  EXPECT_EQ(DisplayText::date(INT_MIN, INT_MAX, INT_MIN, 0), "-2147483648.2147483");
  EXPECT_EQ(DisplayText::date(INT_MIN, INT_MAX, INT_MIN, 1), "-48-2147483647--214");
  EXPECT_EQ(DisplayText::shortDate(INT_MIN, INT_MIN, 2), "-2147483648/-214748");
}

}  // namespace
