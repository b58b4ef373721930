// Setting the clock by hand and from seconds, and saving the time for a restart.

#include <gmock/gmock.h>

#include <limits>

#include "support/LogCapture.h"
#include "support/Telephone.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::chrono::milliseconds kSoon{1};

// A running clock in UTC, at 2016-06-16T00:00:00.
class ClockStartedAtItsSavedTime : public testing::Test {
 protected:
  ClockStartedAtItsSavedTime() { telephone.switchOn(); }
  ClockServiceIfc& service() { return telephone.service(); }
  std::string now() { return service().getUTCTime(0); }

  support::Telephone telephone;
  support::LogCapture log{6};
};

TEST_F(ClockStartedAtItsSavedTime, AcceptsDatesFrom1970To2037) {
  struct Row {
    int day, month, year;
    const char* date;
  };
  for (const Row& row :
       {Row{1, 1, 1970, "1970-01-01"}, Row{31, 12, 2037, "2037-12-31"}, Row{1, 1, 37, "2037-01-01"},
        Row{1, 1, 0, "2000-01-01"}, Row{1, 1, -5, "1995-01-01"}, Row{1, 1, -30, "1970-01-01"},
        Row{1, 1, 24, "2024-01-01"}, Row{32, 1, 2024, "2024-02-01"}, Row{0, 3, 2024, "2024-02-29"},
        Row{1, 13, 2024, "2025-01-01"}, Row{29, 2, 2023, "2023-03-01"}}) {
    EXPECT_TRUE(service().setDate(row.day, row.month, row.year)) << row.date;
    EXPECT_EQ(now().substr(0, 10), row.date);
  }
  EXPECT_TRUE(log.has(5, "setDate: \"1\", \"1\", \"24\""));
}

TEST_F(ClockStartedAtItsSavedTime, RefusesDatesOutside1970To2037AndChangesNothing) {
  struct Row {
    int year;
    const char* taken;
  };
  telephone.events.take();
  for (const Row& row :
       {Row{1969, "1969"}, Row{2038, "2038"}, Row{99, "2099"}, Row{38, "2038"}, Row{-31, "1969"},
        Row{100, "100"}, Row{std::numeric_limits<int>::max(), "2147483647"},
        Row{std::numeric_limits<int>::min(), "-2147481648"}}) {
    EXPECT_FALSE(service().setDate(1, 1, row.year)) << row.year;
    EXPECT_TRUE(log.has(5, std::string("Year falls outside UNIX/POSIX restriction: ") + row.taken))
        << row.year;
  }
  telephone.pass(kSoon);
  EXPECT_THAT(telephone.events.take(), IsEmpty());
  telephone.jump("2020-01-01T00:00:00");
  EXPECT_EQ(now(), "2020-01-01T00:00:00+00:00");  // still the system's clock
}

TEST_F(ClockStartedAtItsSavedTime, KeepsTheTimeOfDayWhenTheDateIsSet) {
  telephone.jump("2020-05-05T17:18:19");
  EXPECT_TRUE(service().setDate(29, 2, 2024));
  EXPECT_EQ(now(), "2024-02-29T17:18:19+00:00");
}

TEST_F(ClockStartedAtItsSavedTime, KeepsTheDateWhenTheTimeIsSet) {
  telephone.jump("2020-05-05T17:18:19");
  EXPECT_TRUE(service().setTime(24, 0, -1));  // normalised
  EXPECT_EQ(now(), "2020-05-05T23:59:59+00:00");
}

TEST_F(ClockStartedAtItsSavedTime, KeepsTheHandSetTimeAndDateWhenTheOtherIsSet) {
  const auto jump = [&] { telephone.jump("2020-05-05T17:18:19"); };  // as another program would
  service().setTime(6, 7, 8);
  jump();
  service().setDate(29, 2, 2024);
  EXPECT_EQ(now(), "2024-02-29T06:07:08+00:00");
  jump();
  service().setTime(1, 2, 3);
  EXPECT_EQ(now(), "2024-02-29T01:02:03+00:00");
}

TEST_F(ClockStartedAtItsSavedTime, AnnouncesTheHoursOfTheHandSetTimeNotOfTheSystems) {
  service().setTime(22, 45, 0);
  telephone.jump("2020-05-05T23:30:00");
  telephone.pass(kSoon);
  telephone.events.take();
  telephone.pass(std::chrono::minutes{75});
  EXPECT_THAT(telephone.events.take(),
              ElementsAre("time 23:00:00", "time 00:00:00", "date 17.06.2016"));
}

TEST_F(ClockStartedAtItsSavedTime, SetsTheSystemsClockAlongWithItsOwn) {
  service().setTime(6, 7, 8);
  EXPECT_EQ(telephone.wallText(), "2016-06-16T06:07:08");
  service().setDate(1, 2, 2003);
  EXPECT_EQ(telephone.wallText(), "2003-02-01T06:07:08");
}

TEST_F(ClockStartedAtItsSavedTime, ShowsTheHandSetTimeEvenIfTheSystemRefusesIt) {
  EXPECT_TRUE(service().setTime(0, 0, -2'000'000'000));  // before 1970
  EXPECT_EQ(telephone.wallText(), "2016-06-16T00:00:00");
  EXPECT_EQ(now().substr(0, 4), "1953");
}

TEST_F(ClockStartedAtItsSavedTime, AnnouncesDateAndTimeAMillisecondAfterATimeIsSet) {
  telephone.events.take();
  service().setTime(6, 7, 8);
  EXPECT_THAT(telephone.events.take(), IsEmpty());
  telephone.pass(kSoon);
  EXPECT_THAT(telephone.events.take(), ElementsAre("date 16.06.2016", "time 06:07:08"));
  EXPECT_TRUE(log.has(5,
                      "timerEvent(m_timeChangedTimer): FallbackTime is "
                      "\"2016-06-16T06:07:08+00:00\""));
  EXPECT_EQ(telephone.stored("FallbackDateTime"), "2016-06-16T06:07:08+00:00");
}

TEST_F(ClockStartedAtItsSavedTime, AnnouncesTheDateAMillisecondAfterADateIsSet) {
  telephone.events.take();
  service().setDate(1, 2, 2003);
  telephone.pass(kSoon);
  EXPECT_THAT(telephone.events.take(), ElementsAre("date 01.02.2003"));
  EXPECT_TRUE(log.has(5,
                      "timerEvent(m_dateChangedTimer) FallbackTime is "
                      "\"2003-02-01T00:00:00+00:00\""));
  EXPECT_EQ(telephone.stored("FallbackDateTime"), "2003-02-01T00:00:00+00:00");
}

TEST_F(ClockStartedAtItsSavedTime, SetsUtcFromSecondsWithoutAServer) {
  for (const char* const server : {"", "0.0.0.0", "::"}) {
    telephone.manage("sntp-addr", server);
    telephone.jumpTo(1);
    service().setTime(1'709'168'523);
    EXPECT_EQ(telephone.wallSeconds(), 1'709'168'523) << server;
  }
  EXPECT_EQ(log.count("UTC set to 2024-02-29T01:02:03+00:00"), 3U);
}

TEST_F(ClockStartedAtItsSavedTime, DoesNotSetUtcFromSecondsWithAServer) {
  telephone.service().handleSNTPClientUpdate(1);
  for (const char* const server : {"192.0.2.1", "time.example.org", "::1", "0.0.0.1"}) {
    telephone.manage("sntp-addr", server);
    service().setTime(1'709'168'523);
    EXPECT_TRUE(log.has(5, std::string("SNTP configured (") + server + ") so time not updated"));
  }
  EXPECT_TRUE(service().isTimeSourceSntp());
  EXPECT_EQ(now(), "2016-06-16T00:00:00+00:00");
}

TEST_F(ClockStartedAtItsSavedTime, LogsThatTheSystemRefusesTheSecondsAndClearsTheServerFlag) {
  telephone.service().handleSNTPClientUpdate(1);
  EXPECT_TRUE(service().isTimeSourceSntp());
  service().setTime(-1);
  EXPECT_TRUE(log.has(2, "settimeofday failed"));
  EXPECT_FALSE(log.hasPart("UTC set to"));
  EXPECT_FALSE(service().isTimeSourceSntp());
  EXPECT_EQ(now(), "2016-06-16T00:00:00+00:00");
}

TEST_F(ClockStartedAtItsSavedTime, ShowsTheHandSetTimeAfterUtcIsSetFromSecondsWithoutAnEvent) {
  service().setTime(6, 7, 8);
  telephone.pass(kSoon);
  telephone.events.take();
  service().setTime(1'709'168'523);
  telephone.pass(kSoon);
  EXPECT_THAT(telephone.events.take(), IsEmpty());
  EXPECT_EQ(telephone.wallSeconds(), 1'709'168'523);
  EXPECT_TRUE(log.has(5, "UTC set to 2024-02-29T01:02:03+00:00"));
  EXPECT_EQ(service().getTime(), "06:07");
}

TEST_F(ClockStartedAtItsSavedTime, SavesTheSystemsTimeEvenWhileItShowsAnother) {
  service().setTime(6, 7, 8);
  telephone.jump("2024-02-29T01:02:03");
  EXPECT_EQ(service().setFallbackTime(), "2024-02-29T01:02:03+00:00");
  EXPECT_EQ(telephone.stored("FallbackDateTime"), "2024-02-29T01:02:03+00:00");
  EXPECT_TRUE(log.has(6, "setFallbackTime: \"2024-02-29T01:02:03+00:00\""));
  EXPECT_EQ(service().getTime(), "06:07");
}

TEST_F(ClockStartedAtItsSavedTime, ReturnsTheTimeEvenIfItCannotBeSaved) {
  telephone.jump("2024-02-29T01:02:03");
  telephone.settings.refuseSets(0, 1);
  EXPECT_EQ(service().setFallbackTime(), "2024-02-29T01:02:03+00:00");
  EXPECT_EQ(telephone.stored("FallbackDateTime"), "(none)");
}

TEST_F(ClockStartedAtItsSavedTime, SavesTheTimeEveryTwelveHours) {
  telephone.pass(std::chrono::hours{12} - kSoon);
  EXPECT_EQ(telephone.stored("FallbackDateTime"), "(none)");
  telephone.pass(kSoon);
  EXPECT_EQ(telephone.stored("FallbackDateTime"), "2016-06-16T12:00:00+00:00");
  EXPECT_TRUE(log.has(5,
                      "timerEvent(m_fallbackTimeUpdateTimer): FallbackTime is "
                      "\"2016-06-16T12:00:00+00:00\""));
  telephone.pass(std::chrono::hours{12});
  EXPECT_EQ(telephone.stored("FallbackDateTime"), "2016-06-17T00:00:00+00:00");
}

TEST_F(ClockStartedAtItsSavedTime, StartsAgainFromTheTimeItSaved) {
  telephone.jump("2024-02-29T01:02:03");
  service().setFallbackTime();
  telephone.switchOff();
  telephone.jumpTo(0);
  telephone.switchOn();
  EXPECT_EQ(now(), "2024-02-29T01:02:03+00:00");
}

// A clock in central Europe that is set across a change to or from daylight saving. The new time is
// counted with the former daylight flag, so the clock shows another hour than the one set.
class ClockSetOverAChange : public testing::Test {
 protected:
  ClockSetOverAChange() { telephone.storeZone("1", true, true, 9); }
  ClockService& startAt(const std::string& utc) {
    telephone.switchOff();
    telephone.store("FallbackDateTime", utc + "+00:00");
    telephone.switchOn();
    return telephone.service();
  }

  support::Telephone telephone;
};

TEST_F(ClockSetOverAChange, KeepsTheDaylightFlagOfNowWhenTheDateIsSet) {
  startAt("2024-01-15T22:30:40").setDate(15, 7, 2024);
  EXPECT_EQ(telephone.managed("time"), "2024-07-15T22:30:40+00:00");
  EXPECT_EQ(telephone.managed("simple-date"), "16.07.2024");
  startAt("2024-07-15T22:30:40").setDate(16, 1, 2024);
  EXPECT_EQ(telephone.managed("time"), "2024-01-15T22:30:40+00:00");
  EXPECT_EQ(telephone.managed("simple-date"), "15.01.2024");
}

TEST_F(ClockSetOverAChange, KeepsTheDaylightFlagOfNowWhenTheTimeIsSet) {
  startAt("2026-03-29T00:30:00").setTime(12, 0, 0);
  EXPECT_EQ(telephone.managed("simple-time"), "13:00");
  startAt("2026-10-25T00:30:00").setTime(12, 0, 0);
  EXPECT_EQ(telephone.managed("simple-time"), "11:00");
}

}  // namespace
