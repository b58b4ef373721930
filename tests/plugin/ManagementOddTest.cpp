// Surprises of the clock's management that are deliberate, because peers in the field rely on them.

#include <gmock/gmock.h>

#include <stdexcept>

#include "plugin/ClockOnWatchedTimers.h"
#include "plugin/ManagedClock.h"
#include "support/ManagedData.h"

namespace {

using namespace std::string_literals;
using testing::Contains;
using testing::ElementsAre;

class OddlyManagedClock : public plugin::ManagedClock {
 protected:
  bool setData(const std::string& key, const std::string& value) {
    return support::set(telephone.service(), key, value);
  }
};

TEST_F(OddlyManagedClock, ReadsSevenThirtyWithAOneDigitHourAsSevenOClock) {
  EXPECT_TRUE(telephone.manage("simple-time", "7:30"));
  EXPECT_EQ(utc(), "2024-03-05T07:00:00+00:00");
}

TEST_F(OddlyManagedClock, ThrowsForATextThatEndsBeforeItsLastPieceBegins) {
  const std::pair<const char*, const char*> rows[] = {{"simple-time", "1"},
                                                      {"simple-time", "10"},
                                                      {"simple-date", "1"},
                                                      {"simple-date", "01."},
                                                      {"simple-date", "01.02"}};
  for (const auto& [key, value] : rows) {
    EXPECT_THROW(setData(key, value), std::out_of_range) << key << " " << value;
    EXPECT_EQ(telephone.managed("simple-time"), "09:07");  // the lock is free
    EXPECT_EQ(utc(), "2024-03-05T09:07:05+00:00");
    EXPECT_EQ(telephone.physical.clockChanges().begun, 0);
  }
}

TEST_F(OddlyManagedClock, TakesATextThatEndsWhereItsLastPieceBegins) {
  EXPECT_TRUE(setData("simple-time", "10:"));
  EXPECT_EQ(utc(), "2024-03-05T10:00:00+00:00");
  EXPECT_TRUE(setData("simple-date", "01.02."));  // the year 0 is 2000
  EXPECT_EQ(utc(), "2000-02-01T10:00:00+00:00");
}

// A byte that is no digit ends a number, also NUL. The refused texts come first.
TEST_F(OddlyManagedClock, CutsTimeAndDateByPositionFromAnyBytes) {
  constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;
  const struct {
    const char* key;
    std::string text;
    bool accepted;
    const char* utc;
  } rows[] = {
      {"time", "2030-01-02T03:04:05+00:00\0"s, false, "2024-03-05T09:07:05+00:00"},
      {"time",
       "2030-01-02T03:\xff"
       "4:05+00:00",
       false, "2024-03-05T09:07:05+00:00"},
      {"simple-date", std::string(kMebibyte, '9'), false, "2024-03-05T09:07:05+00:00"},
      {"simple-time", "0112345", true, "2024-03-05T01:23:00+00:00"},
      {"simple-time", "1\0:2\0"s, true, "2024-03-05T01:02:00+00:00"},
      {"simple-time",
       "\xff"
       "7\n8 ",
       true, "2024-03-05T00:08:00+00:00"},
      {"simple-time", std::string(kMebibyte, '\0'), true, "2024-03-05T00:00:00+00:00"},
      {"simple-date",
       "1\0\xff"
       "2\0\xff"
       "2025"s,
       true, "2025-02-01T00:00:00+00:00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(telephone.manage(row.key, row.text), row.accepted) << row.key << " " << row.utc;
    EXPECT_EQ(utc(), row.utc);
    EXPECT_EQ(telephone.physical.clockChanges().begun, telephone.physical.clockChanges().ended);
  }
}

TEST_F(OddlyManagedClock, RecordsNoSetThatThrew) {
  EXPECT_FALSE(telephone.manage("simple-time", "10"));
  EXPECT_THAT(telephone.security.lines(), testing::IsEmpty());
  EXPECT_TRUE(telephone.manage("simple-time", "10:11"));
}

TEST_F(OddlyManagedClock, HasNoSimpleDateUnderAnUnknownFormat) {
  EXPECT_TRUE(telephone.manage("date-format", "7"));
  EXPECT_EQ(telephone.managed("simple-date"), "");  // a value, if an empty one
  EXPECT_TRUE(log.has(2, "getData: Invalid Date Format.\n"));
}

TEST_F(OddlyManagedClock, SetsDayAndMonthZeroUnderAnUnknownFormatWithoutReadingTheText) {
  EXPECT_TRUE(telephone.manage("date-format", "7"));
  EXPECT_TRUE(telephone.manage("simple-date", "x"));  // too short for any format
  EXPECT_TRUE(log.has(5, "setDate: \"0\", \"0\", \"0\""));
  EXPECT_EQ(utc(), "1999-11-30T09:07:05+00:00");
}

TEST_F(OddlyManagedClock, MovesTheTimeItemByTheRequestedServerEvenWhenItIsRefused) {
  const std::tuple<const char*, bool, int> rows[] = {
      {"192.0.2.1", true, 4}, {"", false, 0},        {"192.0.2.1", false, 4},
      {"0.0.0.0", true, 0},   {"no host", false, 4}, {"0.0.0.0", false, 0},
      {"[::1]", false, 4},    {"::", true, 0},       {"[::]", false, 4}};
  for (const auto& [server, accepted, state] : rows) {
    EXPECT_EQ(telephone.manage("sntp-addr", server), accepted) << server;
    EXPECT_EQ(telephone.management.itemState("time"), state) << server;
  }
}

TEST_F(OddlyManagedClock, HasIndexMinusOneForAStoredZoneThatTheTableLacks) {
  telephone.switchOff();
  telephone.store("DaylightSavingZoneIDDevice", "99");
  telephone.switchOn();
  EXPECT_EQ(telephone.managed("daylight-save-zone-index"), "-1");
  EXPECT_EQ(telephone.managed("daylight-save-zone-text"), "");
  EXPECT_EQ(telephone.managed("daylight-save-zone-id"), "99");
}

// The same on recording parts.
class OddlyManagedClockOnRecordingParts : public plugin::ClockOnWatchedTimers {
 protected:
  bool set(const std::string& key, const std::string& value) {
    return support::set(*service, key, value);
  }
};

TEST_F(OddlyManagedClockOnRecordingParts, ReportsAZoneThatCouldNotBeStored) {
  start();
  store.refuses = true;
  EXPECT_FALSE(set("daylight-save-zone-index", "9"));
  EXPECT_THAT(journal.take(),
              ElementsAre("store DaylightSavingZoneIDDevice=9 refused",
                          "report daylight-save-zone-id=9", "service SecurityLogServiceIfc"));
}

TEST_F(OddlyManagedClockOnRecordingParts, GivesTheResultOfTheSecondFormatWhenBothAreReset) {
  for (const bool second : {true, false}) {
    store.put("DateFormat", "1");
    store.put("TimeFormat", "1");
    management.acceptReports = {{"date-format", !second}, {"time-format", second}};
    start();
    EXPECT_EQ(service->resetUserData(), second);
    end();
  }
}

TEST_F(OddlyManagedClockOnRecordingParts, GivesTheResultOfTheFirstFormatWhenItIsTheOnlyOne) {
  for (const bool accepted : {true, false}) {
    store.put("DateFormat", "1");
    management.acceptReports = {{"date-format", accepted}};
    start();
    EXPECT_EQ(service->resetUserData(), accepted);
    end();
  }
}

TEST_F(OddlyManagedClockOnRecordingParts, ReportsAResetThatCouldNotBeStored) {
  store.put("DateFormat", "1");
  start();
  store.refuses = true;
  EXPECT_TRUE(service->resetUserData());
  EXPECT_THAT(journal.take(), Contains("report date-format=0"));
}

}  // namespace
