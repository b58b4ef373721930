#include "ClockUtils.h"

#include <cstring>
#include <ctime>
#include <limits>
#include <ostream>
#include <string>

#include "Promise.h"

namespace {

class ClockUtilsPromise : public conformance::Promise {};

struct UtcRow {
  const char* text;
  const char* utc;  // the same instant
  int weekday, dayOfYear;
};

tm parsedUtc(const std::string& text) {
  tm record{};
  record.tm_isdst = 1;
  EXPECT_TRUE(ClockUtils::convertTimeStringToTimeStruct(text, record)) << text;
  return record;
}

std::string printedUtc(tm record) {
  std::string text = "old";
  ClockUtils::convertTimeStructToTimeString(record, text);
  return text;
}

tm utcRecord(int year, int month, int day, int hour, int minute, int second) {
  tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  return fields;
}

TEST_F(ClockUtilsPromise, ConvertsToUtc) {
  promises(
      "The offset is applied: `utc` then holds UTC, with weekday and day of the year filled in and "
      "tm_isdst 0.");
  const UtcRow rows[] = {
      {"2016-06-16T00:00:00+00:00", "2016-06-16T00:00:00+00:00", 4, 167},
      {"1970-01-01T00:00:00+00:00", "1970-01-01T00:00:00+00:00", 4, 0},
      {"1969-12-31T23:59:59+00:00", "1969-12-31T23:59:59+00:00", 3, 364},
      {"2000-02-29T12:34:56-00:00", "2000-02-29T12:34:56+00:00", 2, 59},
      {"2016-12-31T23:59:60+00:00", "2016-12-31T23:59:60+00:00", 6, 365},
      {"2026-03-08T01:59:59-05:00", "2026-03-08T06:59:59+00:00", 0, 66},
      {"2026-07-01T05:29:00+05:30", "2026-06-30T23:59:00+00:00", 2, 180},
      {"2026-01-01T00:00:00+23:59", "2025-12-31T00:01:00+00:00", 3, 364},
      {"2025-12-31T23:59:59-23:59", "2026-01-01T23:58:59+00:00", 4, 0},
      {"2024-03-01T00:30:00+01:00", "2024-02-29T23:30:00+00:00", 4, 59},
      {"2023-03-01T00:30:00+01:00", "2023-02-28T23:30:00+00:00", 2, 58},
      {"2024-02-28T23:30:00-01:00", "2024-02-29T00:30:00+00:00", 4, 59},
      {"2023-02-28T23:30:00-01:00", "2023-03-01T00:30:00+00:00", 3, 59},
      {"0000-01-01T00:00:00+00:00", "0000-01-01T00:00:00+00:00", 6, 0},
      {"9999-12-31T23:59:59+00:00", "9999-12-31T23:59:59+00:00", 5, 364},
  };
  for (const UtcRow& row : rows) {
    const tm utc = parsedUtc(row.text);
    EXPECT_EQ(printedUtc(utc), row.utc) << row.text;
    EXPECT_EQ(utc.tm_wday, row.weekday) << row.text;
    EXPECT_EQ(utc.tm_yday, row.dayOfYear) << row.text;
    EXPECT_EQ(utc.tm_isdst, 0) << row.text;
  }
}

TEST_F(ClockUtilsPromise, CarriesTheYearBeyondFourDigits) {
  promises("The offset is applied: `utc` then holds UTC");
  EXPECT_EQ(parsedUtc("0000-01-01T00:00:00+00:01").tm_year, -1 - 1900);
  EXPECT_EQ(parsedUtc("0000-01-01T00:00:00+00:01").tm_wday, 5);
  EXPECT_EQ(parsedUtc("9999-12-31T23:59:00-00:01").tm_year, 10000 - 1900);
  EXPECT_EQ(parsedUtc("9999-12-31T23:59:00-00:01").tm_wday, 6);
}

// Each day from 1970 to 2037.
TEST_F(ClockUtilsPromise, AgreesWithTheCLibrary) {
  promises("with weekday and day of the year filled in");
  constexpr time_t kDay = 24 * 60 * 60;
  for (time_t instant = 1; instant < 2'145'916'800; instant += kDay + 7) {
    tm expected{};
    gmtime_r(&instant, &expected);
    const tm utc = parsedUtc(printedUtc(expected));
    ASSERT_EQ(utc.tm_yday, expected.tm_yday) << instant;
    ASSERT_EQ(utc.tm_wday, expected.tm_wday) << instant;
    tm copy = utc;
    ASSERT_EQ(timegm(&copy), instant);
  }
}

TEST_F(ClockUtilsPromise, AcceptsEachLimit) {
  promises(
      "year 0000-9999, month, day of that month, hour 0-23, minute, second 0-60, '+' or '-', "
      "offset up to 23:59.");
  for (const char* const text :
       {"2001-01-01T00:00:00+00:00", "2001-12-31T23:59:60+23:59", "2001-12-31T23:59:60-23:59",
        "2004-02-29T00:00:00+00:00", "2000-02-29T00:00:00+00:00", "2001-04-30T00:00:00+00:00"}) {
    parsedUtc(text);
  }
}

TEST_F(ClockUtilsPromise, RefusesOneStepOutsideEachLimit) {
  promises("False, and `utc` untouched, for anything else.");
  for (const char* const text :
       {"2001-00-01T00:00:00+00:00", "2001-13-01T00:00:00+00:00", "2001-01-00T00:00:00+00:00",
        "2001-01-32T00:00:00+00:00", "2001-02-29T00:00:00+00:00", "1900-02-29T00:00:00+00:00",
        "2004-02-30T00:00:00+00:00", "2001-04-31T00:00:00+00:00", "2001-06-31T00:00:00+00:00",
        "2001-09-31T00:00:00+00:00", "2001-11-31T00:00:00+00:00", "2001-01-01T24:00:00+00:00",
        "2001-01-01T00:60:00+00:00", "2001-01-01T00:00:61+00:00", "2001-01-01T00:00:00+24:00",
        "2001-01-01T00:00:00-24:00", "2001-01-01T00:00:00+00:60"}) {
    tm record{};
    EXPECT_FALSE(ClockUtils::convertTimeStringToTimeStruct(text, record)) << text;
  }
}

TEST_F(ClockUtilsPromise, RefusesOtherLengths) {
  promises("Parses exactly 25 characters");
  for (const std::string& text :
       {std::string(), std::string("2001-01-01T00:00:00+00:0"), std::string("2001-01-01T00:00:00Z"),
        std::string("2001-01-01T00:00:00+00:000"), std::string(" 2001-01-01T00:00:00+00:00"),
        std::string("2001-01-01T00:00:00+00:00\n"), std::string("2001-01-01T00:00:00+00:00\0", 26),
        std::string(1'000'000, '0')}) {
    tm record{};
    EXPECT_FALSE(ClockUtils::convertTimeStringToTimeStruct(text, record)) << text.substr(0, 40);
  }
}

TEST_F(ClockUtilsPromise, RefusesAWrongCharacterAnywhere) {
  promises("False, and `utc` untouched, for anything else.");
  const std::string good = "2016-06-16T00:00:00+00:00";
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const char wrong : {'x', ' ', '\0', '/', ':', '-', '+', 'T', 't', '\xFF'}) {
      std::string text = good;
      text[at] = wrong;
      if (text == good || (at == 19 && wrong == '-')) continue;
      tm record{};
      EXPECT_FALSE(ClockUtils::convertTimeStringToTimeStruct(text, record)) << text;
    }
  }
}

TEST_F(ClockUtilsPromise, LeavesTheRecordUntouchedOnFailure) {
  promises("False, and `utc` untouched, for anything else.");
  tm before{};
  std::memset(&before, 0x5A, sizeof before);
  tm record = before;
  for (const char* const text : {"", "nonsense", "2001-02-29T00:00:00+00:00"}) {
    EXPECT_FALSE(ClockUtils::convertTimeStringToTimeStruct(text, record));
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0) << text;
  }
}

TEST_F(ClockUtilsPromise, PrintsTwentyFiveCharacters) {
  promises(
      "Writes the record (year since 1900, month 0-11) as a UTC string with offset \"+00:00\".");
  EXPECT_EQ(printedUtc(utcRecord(2016, 6, 16, 0, 0, 0)), "2016-06-16T00:00:00+00:00");
  EXPECT_EQ(printedUtc(utcRecord(1, 2, 3, 4, 5, 6)), "0001-02-03T04:05:06+00:00");
  EXPECT_EQ(printedUtc(utcRecord(9999, 12, 31, 23, 59, 60)), "9999-12-31T23:59:60+00:00");
}

TEST_F(ClockUtilsPromise, DoesNotNormaliseFields) {
  promises("Fields are printed as they are; the record is not normalised.");
  EXPECT_EQ(printedUtc(utcRecord(2016, 0, 0, 0, 0, 0)), "2016-00-00T00:00:00+00:00");
  EXPECT_EQ(printedUtc(utcRecord(2016, 99, 99, 99, 99, 99)), "2016-99-99T99:99:99+00:00");
  EXPECT_EQ(printedUtc(utcRecord(2016, 100, 1, 0, 0, 0)), "2016-100-01T00:00:00+00:00");
  EXPECT_EQ(printedUtc(utcRecord(2016, -1, -1, -1, -1, -1)), "2016--1--1T-1:-1:-1+00:00");
  EXPECT_EQ(printedUtc(utcRecord(10000, 1, 1, 0, 0, 0)), "10000-01-01T00:00:00+00:00");
  EXPECT_EQ(printedUtc(utcRecord(-1, 1, 1, 100, 100, 100)), "-001-01-01T100:100:100+00:00");
}

TEST_F(ClockUtilsPromise, PrintsAnyNumbers) {
  promises("Fields are printed as they are");
  using Limits = std::numeric_limits<int>;
  tm most{};
  most.tm_year = most.tm_mon = most.tm_mday = Limits::max();
  most.tm_hour = most.tm_min = most.tm_sec = Limits::max();
  EXPECT_EQ(printedUtc(most),
            "2147485547-2147483648-2147483647T2147483647:2147483647:2147483647+00:00");
  tm least{};
  least.tm_year = least.tm_mon = least.tm_mday = Limits::min();
  least.tm_hour = least.tm_min = least.tm_sec = Limits::min();
  EXPECT_EQ(printedUtc(least),
            "-2147481748--2147483647--2147483648T-2147483648:-2147483648:-2147483648+00:00");
}

TEST_F(ClockUtilsPromise, AnyThreadMayCall) {
  promises("Thread: any.");
  conformance::onTwoThreads([] {
    for (int day = 10; day < 30; ++day) {
      const std::string text = "2026-03-" + std::to_string(day) + "T01:02:03+00:00";
      EXPECT_EQ(printedUtc(parsedUtc(text)), text);
    }
  });
}

}  // namespace
