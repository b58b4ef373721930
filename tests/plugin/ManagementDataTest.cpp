// The sixteen management keys: the value that each returns, and the values that it accepts.

#include <gtest/gtest.h>

#include "DSTZoneRules.h"
#include "plugin/ManagedClock.h"
#include "support/ManagedData.h"

namespace {

using plugin::ManagedClock;

TEST_F(ManagedClock, ReturnsADefaultForEachKey) {
  std::string zones;
  DSTZoneRules().getDSTZoneList(zones);
  const std::pair<const char*, std::string> rows[] = {{"time", "2024-03-05T09:07:05+00:00"},
                                                      {"simple-time", "09:07"},
                                                      {"simple-date", "05.03.2024"},
                                                      {"date-format", "0"},
                                                      {"time-format", "0"},
                                                      {"sntp-addr", ""},
                                                      {"ntp-secret", ""},
                                                      {"sntp-tz-offset", "0"},
                                                      {"daylight-save", "false"},
                                                      {"daylight-save-minutes", "60"},
                                                      {"time-source", "0"},
                                                      {"daylight-save-zone-list", zones},
                                                      {"daylight-save-zone-index", "0"},
                                                      {"daylight-save-zone-text", "Not Set"},
                                                      {"daylight-save-zone-id", "0"},
                                                      {"auto-daylight-save", "false"}};
  for (const auto& [key, value] : rows) {
    EXPECT_EQ(telephone.managed(key), value) << key;
    EXPECT_TRUE(log.has(5, std::string("getData ") + key));
    EXPECT_TRUE(log.has(5, std::string("getData: ") + key + " : " + value));
  }
}

TEST_F(ManagedClock, PopulatesNothingForAnUnknownKey) {
  for (const char* const key : {"", "Time", "time ", "date_format", "last-restart-date"}) {
    ManageableData record = conformance::recordOf(key);
    EXPECT_FALSE(telephone.service().getData(record)) << key;
    std::string value = "untouched";
    EXPECT_FALSE(record.interogate(key, value)) << key;
    EXPECT_EQ(value, "untouched");
    EXPECT_TRUE(log.has(
        5, std::string("Option ") + key + " is not supported. May be write only or non-existant."));
    EXPECT_TRUE(log.has(5, std::string("getData: ") + key + " : "));
  }
}

struct Setting {
  const char* key;
  const char* value;
  bool accepted;
  const char* shown;       // by the key afterwards
  const char* storageKey;  // and what is stored under this
  const char* stored;
};

TEST_F(ManagedClock, AcceptsAndRefusesSettings) {
  const Setting rows[] = {
      // any text is a format, a number of minutes, a time source
      {"date-format", "1", true, "1", "DateFormat", "1"},
      {"date-format", "007", true, "7", "DateFormat", "007"},
      {"date-format", "x", true, "0", "DateFormat", "x"},
      {"date-format", "", true, "0", "DateFormat", ""},
      {"time-format", "1", true, "1", "TimeFormat", "1"},
      {"time-format", "-3", true, "-3", "TimeFormat", "-3"},
      {"daylight-save-minutes", "30", true, "30", "DaylightSavingMinutes", "30"},
      {"daylight-save-minutes", "99999999999", true, "2147483647", "DaylightSavingMinutes",
       "99999999999"},
      {"time-source", "2", true, "2", "QexTimeSource", "2"},
      {"time-source", "none", true, "0", "QexTimeSource", "none"},
      {"ntp-secret", "s&<>\"'\n", true, "s&<>\"'\n", "NTPsharedSecret", "s&<>\"'\n"},
      {"ntp-secret", "", true, "", "NTPsharedSecret", ""},
      // addresses and host names
      {"sntp-addr", "192.0.2.1", true, "192.0.2.1", "SNTPaddress", "192.0.2.1"},
      {"sntp-addr", "192.0.2.1", false, "192.0.2.1", "SNTPaddress", "192.0.2.1"},
      {"sntp-addr", "2001:db8::1", true, "2001:db8::1", "SNTPaddress", "2001:db8::1"},
      {"sntp-addr", "[2001:db8::1]", false, "2001:db8::1", "SNTPaddress", "2001:db8::1"},
      {"sntp-addr", "time.example.org", true, "time.example.org", "SNTPaddress",
       "time.example.org"},
      {"sntp-addr", "no host", false, "time.example.org", "SNTPaddress", "time.example.org"},
      {"sntp-addr", "", false, "time.example.org", "SNTPaddress", "time.example.org"},
      {"sntp-addr", "0.0.0.0", true, "0.0.0.0", "SNTPaddress", "0.0.0.0"},
      {"sntp-addr", "::", true, "::", "SNTPaddress", "::"},
      // hours, or seconds when too large for hours
      {"sntp-tz-offset", "5.5", true, "5.5", "TimezoneOffset", "5.5"},
      {"sntp-tz-offset", "", false, "5.5", "TimezoneOffset", "5.5"},
      {"sntp-tz-offset", "-12.5", true, "-12.5", "TimezoneOffset", "-12.5"},
      {"sntp-tz-offset", "7200", true, "2", "TimezoneOffset", "2"},
      {"sntp-tz-offset", " 1.5h", true, "1.5", "TimezoneOffset", "1.5"},
      {"sntp-tz-offset", "hours", true, "0", "TimezoneOffset", "0"},
      // flags
      {"daylight-save", "true", true, "true", "DaylightSavingActive", "true"},
      {"daylight-save", "yes", false, "true", "DaylightSavingActive", "true"},
      {"daylight-save", "TRUE", false, "true", "DaylightSavingActive", "true"},
      {"daylight-save", "1", false, "true", "DaylightSavingActive", "true"},
      {"daylight-save", "", false, "true", "DaylightSavingActive", "true"},
      {"daylight-save", "false", true, "false", "DaylightSavingActive", "false"},
      {"auto-daylight-save", "true", true, "true", "AutoDaylightSavingEnabledDevice", "true"},
      {"auto-daylight-save", "False", false, "true", "AutoDaylightSavingEnabledDevice", "true"},
      // zones
      {"daylight-save-zone-id", "14", true, "14", "DaylightSavingZoneIDDevice", "14"},
      {"daylight-save-zone-id", "15", false, "14", "DaylightSavingZoneIDDevice", "14"},
      {"daylight-save-zone-id", "-1", false, "14", "DaylightSavingZoneIDDevice", "14"},
      {"daylight-save-zone-id", "99999999999", false, "14", "DaylightSavingZoneIDDevice", "14"},
      {"daylight-save-zone-id", "none", true, "0", "DaylightSavingZoneIDDevice", "0"},
      {"daylight-save-zone-index", "9", true, "9", "DaylightSavingZoneIDDevice", "9"},
      {"daylight-save-zone-index", "15", false, "9", "DaylightSavingZoneIDDevice", "9"},
      {"daylight-save-zone-index", "-1", false, "9", "DaylightSavingZoneIDDevice", "9"},
      {"daylight-save-zone-index", "", true, "0", "DaylightSavingZoneIDDevice", "0"},
  };
  for (const Setting& row : rows) {
    EXPECT_EQ(telephone.manage(row.key, row.value), row.accepted) << row.key << " " << row.value;
    EXPECT_EQ(telephone.managed(row.key), row.shown) << row.key << " " << row.value;
    EXPECT_EQ(telephone.stored(row.storageKey), row.stored) << row.key << " " << row.value;
    EXPECT_TRUE(log.has(5, std::string("setData: \"") + row.key + "\": \"" + row.value + "\""));
  }
}

TEST_F(ManagedClock, CannotBeSetUnderItsReadOnlyAndItsUnknownKeys) {
  for (const char* const key :
       {"daylight-save-zone-list", "daylight-save-zone-text", "", "Date-format", "unknown"}) {
    EXPECT_FALSE(telephone.manage(key, "1")) << key;
    EXPECT_TRUE(log.has(
        5, std::string("Option ") + key + " cannot be set. May be read only or non-existant."));
  }
}

TEST_F(ManagedClock, NamesTheZoneThatIsSet) {
  EXPECT_TRUE(telephone.manage("daylight-save-zone-index", "14"));
  EXPECT_EQ(telephone.managed("daylight-save-zone-text"), "New Zealand (Chatham)");
  EXPECT_EQ(telephone.managed("daylight-save-zone-id"), "14");
}

TEST_F(ManagedClock, ShowsTheSimpleDateInEachFormat) {
  for (const auto& [format, date] :
       {std::pair{"0", "05.03.2024"}, {"1", "2024-03-05"}, {"2", "03/05/2024"}}) {
    EXPECT_TRUE(telephone.manage("date-format", format));
    EXPECT_EQ(telephone.managed("simple-date"), date);
  }
}

TEST_F(ManagedClock, TakesTheSimpleDateInEachFormat) {
  for (const auto& [format, date, shown] : {std::tuple{"0", "31.12.2023", "2023-12-31"},
                                            {"1", "2022-11-30", "2022-11-30"},
                                            {"2", "10/29/2021", "2021-10-29"},
                                            {"0", "01x02y2020", "2020-02-01"},
                                            {"0", "32.01.2020 and more", "2020-02-01"},
                                            {"0", "01.02.19", "2019-02-01"}}) {
    EXPECT_TRUE(telephone.manage("date-format", format));
    EXPECT_TRUE(telephone.manage("simple-date", date)) << date;
    EXPECT_EQ(utc(), std::string(shown) + "T09:07:05+00:00");
  }
}

TEST_F(ManagedClock, RefusesASimpleDateOutside1970To2037) {
  for (const char* const date : {"01.01.2038", "31.12.1969", "01.01.9999", "01.01.0038"}) {
    EXPECT_FALSE(telephone.manage("simple-date", date)) << date;
    EXPECT_EQ(utc(), "2024-03-05T09:07:05+00:00");
  }
}

TEST_F(ManagedClock, RefusesABlankSimpleDateAndTime) {
  for (const char* const key : {"simple-date", "simple-time"}) {
    for (const char* const blank : {"", "???"}) {
      EXPECT_FALSE(telephone.manage(key, blank)) << key << blank;
      EXPECT_EQ(telephone.physical.clockChanges().begun, 0);
    }
  }
  EXPECT_EQ(utc(), "2024-03-05T09:07:05+00:00");
}

TEST_F(ManagedClock, TakesTheSimpleTimeWithoutSeconds) {
  for (const auto& [text, shown] : {std::pair{"13:45", "13:45:00"},
                                    {"00:00", "00:00:00"},
                                    {"23x59", "23:59:00"},
                                    {"12:34:56", "12:34:00"},
                                    {"?1:23", "00:23:00"},
                                    {"12:???", "12:00:00"},
                                    {"ab:cd", "00:00:00"}}) {
    EXPECT_TRUE(telephone.manage("simple-time", text)) << text;
    EXPECT_EQ(utc(), std::string("2024-03-05T") + shown + "+00:00") << text;
  }
}

TEST_F(ManagedClock, TakesTheTimeAsUtcAndShowsItLocally) {
  telephone.changeZone("sntp-tz-offset", "2");
  EXPECT_TRUE(telephone.manage("time", "2030-12-31T23:30:15+00:00"));
  EXPECT_EQ(utc(), "2030-12-31T23:30:15+00:00");
  EXPECT_EQ(telephone.managed("simple-time"), "01:30");
  EXPECT_EQ(telephone.managed("simple-date"), "01.01.2031");
  EXPECT_TRUE(telephone.manage("time", "2030-12-31T23:30:15+02:00"));
  EXPECT_EQ(utc(), "2030-12-31T21:30:15+00:00");
}

TEST_F(ManagedClock, RefusesAnInvalidUtcStringWithoutAClockChangeNotice) {
  for (const char* const text : {"", "???", "now", "2030-12-31T23:30:15",
                                 "2030-02-30T00:00:00+00:00", "2030-12-31T24:00:00+00:00"}) {
    EXPECT_FALSE(telephone.manage("time", text)) << text;
    EXPECT_EQ(telephone.physical.clockChanges().begun, 0) << text;
  }
  EXPECT_EQ(utc(), "2024-03-05T09:07:05+00:00");
}

TEST_F(ManagedClock, SetsNoTimeWhenTheDateIsRefused) {
  EXPECT_FALSE(telephone.manage("time", "2038-01-01T01:02:03+00:00"));
  EXPECT_EQ(utc(), "2024-03-05T09:07:05+00:00");
  EXPECT_EQ(telephone.physical.clockChanges().begun,
            1);  // the notice of the begin is followed by one of the end
  EXPECT_EQ(telephone.physical.clockChanges().ended, 1);
}

}  // namespace
