#include "ClockService/SimpleDateText.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace {

using SimpleDateText::Date;

constexpr int kUnknownFormats[] = {-1, 3, 7, INT_MAX, INT_MIN};

std::string textOf(const Date& date) {
  return std::to_string(date.day) + " " + std::to_string(date.month) + " " +
         std::to_string(date.year);
}

TEST(SimpleDateText, PrintsEachFormatPadded) {
  const struct {
    Date date;
    int format;
    const char* text;
  } table[] = {{{5, 3, 2024}, 0, "05.03.2024"},   {{5, 3, 2024}, 1, "2024-03-05"},
               {{5, 3, 2024}, 2, "03/05/2024"},   {{9, 9, 2024}, 0, "09.09.2024"},
               {{10, 10, 2024}, 0, "10.10.2024"}, {{31, 12, 2037}, 1, "2037-12-31"},
               {{0, 0, 1970}, 2, "00/00/1970"},   {{1, 1, 0}, 1, "0000-01-01"},
               {{1, 1, 9}, 1, "0009-01-01"},      {{1, 1, 10}, 1, "0010-01-01"},
               {{1, 1, 99}, 1, "0099-01-01"},     {{1, 1, 100}, 1, "0100-01-01"},
               {{1, 1, 999}, 1, "0999-01-01"},    {{1, 1, 1000}, 1, "1000-01-01"},
               {{1, 1, 9999}, 1, "9999-01-01"},   {{1, 1, -1}, 1, "000-1-01-01"},
               {{1, 1, 10000}, 1, "10000-01-01"}};
  for (const auto& row : table) EXPECT_EQ(SimpleDateText::print(row.date, row.format), row.text);
}

TEST(SimpleDateText, PrintsTimeWithTwoDigits) {
  EXPECT_EQ(SimpleDateText::printTime(9, 7), "09:07");
  EXPECT_EQ(SimpleDateText::printTime(0, 0), "00:00");
  EXPECT_EQ(SimpleDateText::printTime(9, 59), "09:59");
  EXPECT_EQ(SimpleDateText::printTime(10, 9), "10:09");
  EXPECT_EQ(SimpleDateText::printTime(23, 10), "23:10");
}

TEST(SimpleDateText, CutsByPosition) {
  const struct {
    const char* text;
    int format;
    const char* date;
  } table[] = {
      {"05.03.2024", 0, "5 3 2024"},   {"2024-03-05", 1, "5 3 2024"},
      {"03/05/2024", 2, "5 3 2024"},   {"31.12.2037", 0, "31 12 2037"},
      {"2037-12-31", 1, "31 12 2037"}, {"12/31/2037", 2, "31 12 2037"},
      {"05x03y2024", 0, "5 3 2024"},    // any separators
      {"0500302024", 0, "5 3 2024"},    // even digits
      {"05.03.20245", 0, "5 3 2024"},   // text after the last piece is not read
      {"05.03.24", 0, "5 3 24"},        // a piece may be short ...
      {"05.03.", 0, "5 3 0"},           // ... or empty at the end of the text
      {"5.3.2024 ", 0, "5 0 24"},       // by position, not by separator
      {"2024-03-05", 0, "20 4 3"},      // written for another format
      {"-5.-3.-100", 0, "-5 -3 -100"},  // a sign belongs to its number
      {" 5. 3. 999", 0, "5 3 999"},     // leading blanks are skipped
      {"aa.bb.cccc", 0, "0 0 0"},       // a piece that is not a number is 0
      {"1a.2b.3cc4", 0, "1 2 3"},       // a number ends at the first other character
      {"2024-3-5 ", 1, "0 3 2024"},
  };
  for (const auto& row : table) {
    EXPECT_EQ(textOf(SimpleDateText::cut(row.text, row.format)), row.date)
        << "\"" << row.text << "\" in format " << row.format;
  }
}

TEST(SimpleDateText, ShortTextThrowsWhenAPieceBeginsBeyondIt) {
  const struct {
    const char* text;
    int format;
  } table[] = {{"05.03", 0}, {"05", 0}, {"1", 0}, {"2024-03", 1}, {"2024-", 1}, {"03/05", 2}};
  for (const auto& row : table) {
    EXPECT_THROW((void)SimpleDateText::cut(row.text, row.format), std::out_of_range)
        << "\"" << row.text << "\" in format " << row.format;
  }
}

TEST(SimpleDateText, UnknownFormatPrintsAndReadsNothing) {
  for (const int format : kUnknownFormats) {
    EXPECT_EQ(SimpleDateText::print({5, 3, 2024}, format), std::nullopt) << "format " << format;
    for (const char* const text : {"05.03.2024", ""})
      EXPECT_EQ(textOf(SimpleDateText::cut(text, format)), "0 0 0") << "format " << format;
  }
}

TEST(SimpleDateText, NumberEndsAtTheFirstOtherCharacterAndAtTheLimitsOfInt) {
  const struct {
    const char* text;
    std::size_t position;
    int number;
  } table[] = {{"09:07", 0, 9},  {"09:07", 3, 7},     {"7:30", 0, 7},      {"7:30", 3, 0},
               {"23:59", 3, 59}, {"12:", 3, 0},       {"x1:2y", 0, 0},     {"12:2y", 3, 2},
               {"+1:-3", 3, -3}, {"\xffx\n8 ", 0, 0}, {"\xffx\n8 ", 2, 8}, {"\n3\x01\t4", 0, 3},
               {"", 0, 0}};
  for (const auto& row : table) {
    EXPECT_EQ(SimpleDateText::numberAt(row.text, row.position, 2), row.number)
        << "\"" << row.text << "\" at " << row.position;
  }
  for (const char* const text : {"", "1", "12"})
    EXPECT_THROW((void)SimpleDateText::numberAt(text, 3, 2), std::out_of_range) << text;
  EXPECT_EQ(SimpleDateText::numberAt("99999999999999999999", 0, 20), INT_MAX);
  EXPECT_EQ(SimpleDateText::numberAt("-9999999999", 0, 11), INT_MIN);
}

}  // namespace
