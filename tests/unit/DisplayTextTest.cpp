#include "ClockService/DisplayText.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>

namespace {

TEST(DisplayText, TimeIsTwoDigitsInTwentyFourHourFormat) {
  const struct {
    int hours;
    int minutes;
    const char* text;
  } table[] = {{0, 0, "00:00"},   {0, 5, "00:05"},   {9, 7, "09:07"},  {11, 59, "11:59"},
               {12, 0, "12:00"},  {12, 30, "12:30"}, {13, 7, "13:07"}, {23, 0, "23:00"},
               {23, 59, "23:59"}, {10, 10, "10:10"}};
  for (const auto& row : table)
    EXPECT_EQ(DisplayText::time(row.hours, row.minutes, 0), row.text)
        << row.hours << " h " << row.minutes;
}

TEST(DisplayText, MidnightIsHourZeroInTwelveHourFormat) {
  EXPECT_EQ(DisplayText::time(0, 0, 1), "00:00am");
  EXPECT_EQ(DisplayText::time(0, 5, 1), "00:05am");
  EXPECT_EQ(DisplayText::time(0, 59, 1), "00:59am");
}

TEST(DisplayText, TimeHasSuffixInTwelveHourFormat) {
  const struct {
    int hours;
    int minutes;
    const char* text;
  } table[] = {{1, 0, "01:00am"},   {11, 0, "11:00am"},  {11, 59, "11:59am"}, {12, 0, "12:00pm"},
               {12, 59, "12:59pm"}, {13, 0, "01:00pm"},  {13, 7, "01:07pm"},  {22, 10, "10:10pm"},
               {23, 0, "11:00pm"},  {23, 59, "11:59pm"}, {6, 6, "06:06am"}};
  for (const auto& row : table)
    EXPECT_EQ(DisplayText::time(row.hours, row.minutes, 1), row.text)
        << row.hours << " h " << row.minutes;
}

TEST(DisplayText, EveryTimeFormatButZeroIsTwelveHour) {
  for (const int format : {1, 2, -1, 24, INT_MAX, INT_MIN})
    EXPECT_EQ(DisplayText::time(13, 7, format), "01:07pm") << "format " << format;
}

TEST(DisplayText, DateFollowsItsFormat) {
  EXPECT_EQ(DisplayText::date(7, 3, 2024, 0), "07.03.24");
  EXPECT_EQ(DisplayText::date(7, 3, 2024, 1), "24-03-07");
  EXPECT_EQ(DisplayText::date(7, 3, 2024, 2), "03/07/24");
  EXPECT_EQ(DisplayText::date(31, 12, 2037, 0), "31.12.37");
  EXPECT_EQ(DisplayText::date(31, 12, 2037, 1), "37-12-31");
  EXPECT_EQ(DisplayText::date(31, 12, 2037, 2), "12/31/37");
}

TEST(DisplayText, YearIsAlwaysTwoDigits) {
  const struct {
    int year;
    const char* text;
  } table[] = {{2005, "01.02.05"}, {2000, "01.02.00"}, {1999, "01.02.99"},
               {1970, "01.02.70"}, {2100, "01.02.00"}, {2010, "01.02.10"}};
  for (const auto& row : table)
    EXPECT_EQ(DisplayText::date(1, 2, row.year, 0), row.text) << "year " << row.year;
}

TEST(DisplayText, ShortDateHasNoYear) {
  EXPECT_EQ(DisplayText::shortDate(7, 3, 0), "07.03.");
  EXPECT_EQ(DisplayText::shortDate(7, 3, 1), "03-07");
  EXPECT_EQ(DisplayText::shortDate(7, 3, 2), "03/07/");
  EXPECT_EQ(DisplayText::shortDate(31, 12, 0), "31.12.");
  EXPECT_EQ(DisplayText::shortDate(31, 12, 1), "12-31");
  EXPECT_EQ(DisplayText::shortDate(31, 12, 2), "12/31/");
}

TEST(DisplayText, UnknownDateFormatIsEmpty) {
  for (const int format : {-1, 3, 7, INT_MAX, INT_MIN}) {
    EXPECT_EQ(DisplayText::date(7, 3, 2024, format), "") << "format " << format;
    EXPECT_EQ(DisplayText::shortDate(7, 3, format), "") << "format " << format;
  }
}

TEST(DisplayText, PrintsAnyNumberAsPrintfDoes) {
  const int numbers[] = {INT_MIN, -100, -99, -10, -9, -1, 0, 1, 9, 10, 11, 99, 100, 101, INT_MAX};
  for (const int day : numbers)
    for (const int month : numbers)
      for (const int year : numbers) {
        char expected[20];
        snprintf(expected, sizeof expected, "%02d.%02d.%02d", day, month, year % 100);
        ASSERT_EQ(DisplayText::date(day, month, year, 0), expected);
      }
}

// 19 characters, whatever is asked for.
TEST(DisplayText, LongerTextIsCut) {
  EXPECT_EQ(DisplayText::time(INT_MIN, INT_MIN, 0), "-2147483648:-214748");
  EXPECT_EQ(DisplayText::time(INT_MIN, INT_MIN, 1), "-2147483648:-214748");
  EXPECT_EQ(DisplayText::date(INT_MIN, INT_MAX, INT_MIN, 0), "-2147483648.2147483");
  EXPECT_EQ(DisplayText::date(INT_MIN, INT_MAX, INT_MIN, 1), "-48-2147483647--214");
  EXPECT_EQ(DisplayText::shortDate(INT_MIN, INT_MIN, 2), "-2147483648/-214748");
}

}  // namespace
