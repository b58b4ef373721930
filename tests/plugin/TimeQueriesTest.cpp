// Queries of the time and the date, in every form.

#include <gmock/gmock.h>

#include <stdexcept>

#include "plugin/RecordingTelephone.h"
#include "support/LogCapture.h"
#include "support/ManagedData.h"
#include "support/Telephone.h"
#include "support/UtcInstant.h"

namespace {

// A running clock of 24-hour format in UTC.
class ClockInUtc : public testing::Test {
 protected:
  ClockInUtc() { telephone.switchOn(); }
  ClockServiceIfc& service() { return telephone.service(); }

  std::string numbers() {
    int hours = -1, minutes = -1, seconds = -1, day = -1, month = -1, year = -1;
    service().getTime(hours, minutes, seconds);
    service().getDate(day, month, year);
    return std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day) + " " +
           std::to_string(hours) + ":" + std::to_string(minutes) + ":" + std::to_string(seconds);
  }

  support::Telephone telephone;
};

// Central European time, changing by the rule of zone 9.
class ClockInCentralEurope : public ClockInUtc {
 protected:
  ClockInCentralEurope() {
    telephone.changeZone("sntp-tz-offset", "1");
    telephone.changeZone("daylight-save", "true");
    telephone.changeZone("auto-daylight-save", "true");
    telephone.changeZone("daylight-save-zone-id", "9");
  }
};

// An hour east of UTC.
class ClockAtFullHourAhead : public ClockInUtc {
 protected:
  ClockAtFullHourAhead() { telephone.changeZone("sntp-tz-offset", "1"); }
};

TEST_F(ClockInUtc, ShowsTheTwelveHourClockWithMidnightAsHourZero) {
  struct Row {
    const char* utc;
    const char* twelve;
    const char* twentyFour;
  };
  for (const Row& row : {Row{"2024-03-07T00:05:59", "00:05am", "00:05"},
                         Row{"2024-03-07T13:07:00", "01:07pm", "13:07"}}) {
    telephone.jump(row.utc);
    telephone.manage("time-format", "0");
    EXPECT_EQ(service().getTime(), row.twentyFour) << row.utc;
    for (const char* const format : {"1", "2", "-1"}) {
      telephone.manage("time-format", format);
      EXPECT_EQ(service().getTime(), row.twelve) << row.utc;
      EXPECT_EQ(service().getTime(std::string(row.utc) + "+00:00"), row.twelve) << row.utc;
    }
  }
}

TEST_F(ClockInUtc, ShowsTheDateInEachFormat) {
  struct Row {
    const char* format;
    const char* date;
    const char* shortDate;
  };
  telephone.jump("2024-03-07T12:00:00");
  for (const Row& row : {Row{"0", "07.03.24", "07.03."}, Row{"1", "24-03-07", "03-07"},
                         Row{"2", "03/07/24", "03/07/"}, Row{"3", "", ""}}) {
    telephone.manage("date-format", row.format);
    EXPECT_EQ(service().getDate(), row.date) << row.format;
    EXPECT_EQ(service().getDateShort(), row.shortDate) << row.format;
    EXPECT_EQ(service().getDate("2024-03-07T12:00:00+00:00"), row.date) << row.format;
    EXPECT_EQ(service().getDateShort("2024-03-07T12:00:00+00:00"), row.shortDate) << row.format;
  }
}

TEST_F(ClockInUtc, ReturnsTheUtcStringOfSecondsAndOfNowForZero) {
  telephone.jump("2024-02-29T01:02:03");
  EXPECT_EQ(service().getUTCTime(0), "2024-02-29T01:02:03+00:00");
  EXPECT_EQ(service().getUTCTime(1), "1970-01-01T00:00:01+00:00");
  EXPECT_EQ(service().getUTCTime(-1), "1969-12-31T23:59:59+00:00");
  EXPECT_EQ(service().getUTCTime(2147483647), "2038-01-19T03:14:07+00:00");
}

TEST_F(ClockInUtc, BuildsAUtcStringFromSixValuesWithTheYearCountedFrom1900) {
  EXPECT_EQ(service().getUTCTime(1, 2, 3, 4, 5, 116), "2016-05-04T01:02:03+00:00");
  EXPECT_EQ(service().getUTCTime(23, 59, 60, 31, 12, 0), "1900-12-31T23:59:60+00:00");
}

TEST_F(ClockInUtc, ReturnsTheTimeAsNumbersAndLogsIt) {
  telephone.jump("2024-02-29T01:02:03");
  const support::LogCapture log(5);
  EXPECT_EQ(numbers(), "2024-2-29 1:2:3");
  EXPECT_TRUE(log.has(5, "getTimeInternal -> timeNow: 1709168523"));
  EXPECT_TRUE(log.has(5, "getTimeInternal -> hours: 1, minutes: 2, seconds: 3"));
}

TEST_F(ClockAtFullHourAhead, ShowsAUtcStringInTheNextYear) {
  const std::string newYear = "2023-12-31T23:30:00+00:00";
  int day = 0, month = 0, year = 0, hours = 0, minutes = 0, seconds = 9;
  EXPECT_TRUE(service().getDate(newYear, day, month, year));
  EXPECT_TRUE(service().getTime(newYear, hours, minutes, seconds));
  EXPECT_EQ((std::vector{day, month, year, hours, minutes, seconds}),
            (std::vector{1, 1, 2024, 0, 30, 0}));
  EXPECT_EQ(service().getTime(newYear), "00:30");
  EXPECT_EQ(service().getDate(newYear), "01.01.24");
  EXPECT_EQ(service().getDateShort(newYear), "01.01.");
}

TEST_F(ClockAtFullHourAhead, AppliesTheOffsetOfAUtcString) {
  EXPECT_EQ(service().getTime("2024-03-07T12:00:00-05:00"), "18:00");
}

TEST_F(ClockAtFullHourAhead, LeavesTheOutputsUnchangedForAnInvalidUtcString) {
  for (const char* const text : {"", "2024-03-07", "2024-13-07T12:00:00+00:00",
                                 "2024-03-07T12:00:00+00:000", "2024-03-07 12:00:00+00:00"}) {
    int a = 71, b = 72, c = 73;
    EXPECT_FALSE(service().getDate(text, a, b, c)) << text;
    EXPECT_FALSE(service().getTime(text, a, b, c)) << text;
    EXPECT_EQ((std::vector{a, b, c}), (std::vector{71, 72, 73})) << text;
  }
}

TEST_F(ClockAtFullHourAhead, ShowsAZeroedRecordForAnInvalidUtcString) {
  // 00:00 plus the zone's hour. The year is 1899; where time_t cannot hold it, mktime normalises
  // nothing.
  EXPECT_EQ(service().getTime("nonsense"), sizeof(time_t) > 4 ? "01:00" : "00:60");
  EXPECT_EQ(service().getDate("nonsense"), "00.00.00");
  EXPECT_EQ(service().getDateShort("nonsense"), "00.00.");
}

TEST_F(ClockInCentralEurope, ReturnsTheLocalTimeAsSecondsWithDaylightSaving) {
  telephone.jump("2024-03-07T12:00:00");
  EXPECT_EQ(service().getTimeVal(), 1709812800);
  EXPECT_EQ(service().getDisplayTimeVal(), 1709812800 + 3600);
  telephone.jump("2024-07-07T12:00:00");
  EXPECT_EQ(service().getDisplayTimeVal(), 1720353600 + 7200);
}

TEST_F(ClockInCentralEurope, AddsTwoHoursToAUtcStringInSummerAndOneInWinter) {
  struct Row {
    const char* utc;
    const char* local;
  };
  for (const Row& row :
       {Row{"2026-07-01T12:00:00+00:00", "14:00"}, Row{"2026-01-01T12:00:00+00:00", "13:00"},
        Row{"2026-03-29T00:59:59+00:00", "01:59"}, Row{"2026-03-29T01:00:00+00:00", "03:00"},
        Row{"2026-10-25T00:59:59+00:00", "02:59"}, Row{"2026-10-25T01:00:00+00:00", "02:00"},
        Row{"2026-10-25T01:59:59+00:00", "02:59"}, Row{"2026-10-25T02:00:00+00:00", "03:00"}})
    EXPECT_EQ(service().getTime(row.utc), row.local) << row.utc;
}

TEST_F(ClockAtFullHourAhead, FollowsTheUptimeInEveryAnswerOnceItIsSetByHand) {
  service().setDate(31, 12, 2030);
  service().setTime(23, 30, 15);
  telephone.jump("2001-01-01T01:01:01");  // another program sets the system's clock
  telephone.pass(std::chrono::minutes{61});
  constexpr time_t kNow = support::utcInstant(2030, 12, 31, 23, 31, 15);
  EXPECT_EQ(service().getTimeVal(), kNow);
  EXPECT_EQ(service().getDisplayTimeVal(), kNow + 3600);
  EXPECT_EQ(service().getUTCTime(0), "2030-12-31T23:31:15+00:00");
  EXPECT_EQ(telephone.managed("time"), "2030-12-31T23:31:15+00:00");
  EXPECT_EQ(numbers(), "2031-1-1 0:31:15");
  EXPECT_EQ(service().getTime(), "00:31");
  EXPECT_EQ(service().getDate(), "01.01.31");
  EXPECT_EQ(service().getDateShort(), "01.01.");
  EXPECT_EQ(telephone.managed("simple-time"), "00:31");
  EXPECT_EQ(telephone.managed("simple-date"), "01.01.2031");
}

TEST_F(ClockInUtc, ThrowsOnConversionToALocalString) {
  for (const char* const text : {"", "2024-03-07T12:00:00+00:00"})
    EXPECT_THROW(service().convertUtcStringToLocalString(text), std::logic_error) << text;
}

// A derived class with queries of its own.
class ClockOfAnotherDay final : public ClockService {
 public:
  using ClockService::getDate;
  using ClockService::getTime;
  using ClockService::getUTCTime;
  void getTime(int& hours, int& minutes, int& seconds) override {
    hours = 1, minutes = 2, seconds = 3;
  }
  void getDate(int& day, int& month, int& year) override { day = 7, month = 3, year = 2024; }
  bool getDate(const std::string& /*utc*/, int& day, int& month, int& year) override {
    day = 8, month = 3, year = 2024;
    return false;
  }
  std::string getUTCTime(int /*seconds*/) override { return "another time"; }
};

using ClockWithOverrides = plugin::RecordedStart;

TEST_F(ClockWithOverrides, AnnouncesWhatTheyReturn) {
  service = std::make_unique<ClockOfAnotherDay>();
  start();
  constexpr int kZoneRefresh = 4;
  service->timerEvent(kZoneRefresh);
  EXPECT_THAT(journal.take(),
              testing::IsSupersetOf({"observer time 01:02:03", "observer date 07.03.2024"}));
  for (const auto& [key, shown] :
       {std::pair{"simple-time", "01:02"}, {"simple-date", "07.03.2024"}})
    EXPECT_EQ(support::get(*service, key), shown);
}

TEST_F(ClockWithOverrides, ShowsWhatTheyReturn) {
  service = std::make_unique<ClockOfAnotherDay>();
  EXPECT_EQ(service->getDate(), "07.03.24");
  EXPECT_EQ(service->getDateShort(), "07.03.");
  EXPECT_EQ(service->getDate("whatever"), "08.03.24");
  EXPECT_EQ(service->getDateShort("whatever"), "08.03.");
  EXPECT_EQ(service->setFallbackTime(), "another time");
}

}  // namespace
