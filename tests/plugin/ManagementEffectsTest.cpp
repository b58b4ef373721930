// What follows a management set, step by step: timers, the NTP client, reports, item states, and
// the user's reset.

#include <gmock/gmock.h>

#include "plugin/ClockOnWatchedTimers.h"
#include "support/LogCapture.h"
#include "support/ManagedData.h"
#include "support/Telephone.h"

namespace {

using plugin::kZoneRefresh;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kRefreshStarts = "start " + std::to_string(kZoneRefresh);

// A managed clock whose calls to the framework are all in the journal.
class ManagedClockOnRecordingParts : public plugin::ClockOnWatchedTimers {
 protected:
  ManagedClockOnRecordingParts() { management.setValue("interface-status", "down"); }

  bool set(const std::string& key, const std::string& value) {
    return support::set(*management.agent, key, value);
  }
  // The journal of one accepted set, and of one refused.
  std::vector<std::string> accepted(const std::string& key, const std::string& value) {
    EXPECT_TRUE(set(key, value)) << key << " " << value;
    return journal.take();
  }
  std::vector<std::string> refused(const std::string& key, const std::string& value) {
    EXPECT_FALSE(set(key, value)) << key << " " << value;
    return journal.take();
  }
};

const char* const kSecurityService = "service SecurityLogServiceIfc";  // looked for while missing

TEST_F(ManagedClockOnRecordingParts, StoresThenRefreshesTheZone) {
  start();
  const std::pair<const char*, const char*> rows[] = {
      {"sntp-tz-offset", "TimezoneOffset=5.5"},
      {"daylight-save-minutes", "DaylightSavingMinutes=30"},
      {"time-source", "QexTimeSource=1"},
      {"daylight-save", "DaylightSavingActive=true"},
      {"auto-daylight-save", "AutoDaylightSavingEnabledDevice=true"},
      {"daylight-save-zone-id", "DaylightSavingZoneIDDevice=9"}};
  for (const auto& [key, stored] : rows) {
    const std::string text = stored;
    EXPECT_THAT(accepted(key, text.substr(text.find('=') + 1)),
                ElementsAre("store " + text, kRefreshStarts, kSecurityService))
        << key;
  }
}

TEST_F(ManagedClockOnRecordingParts, RefreshesNothingWhenTheSettingIsRefused) {
  start();
  for (const auto& [key, value] : {std::pair{"sntp-tz-offset", ""},
                                   {"daylight-save", "yes"},
                                   {"auto-daylight-save", "no"},
                                   {"daylight-save-zone-id", "15"},
                                   {"daylight-save-zone-index", "15"}})
    EXPECT_THAT(refused(key, value), ElementsAre(kSecurityService)) << key;
}

TEST_F(ManagedClockOnRecordingParts, RefreshesTheZoneAlsoForAnUnchangedOffset) {
  start();
  EXPECT_THAT(accepted("sntp-tz-offset", "0"), ElementsAre(kRefreshStarts, kSecurityService));
}

TEST_F(ManagedClockOnRecordingParts, OnlyStoresTheDisplayFormats) {
  start();
  EXPECT_THAT(accepted("date-format", "2"), ElementsAre("store DateFormat=2", kSecurityService));
  EXPECT_THAT(accepted("time-format", "1"), ElementsAre("store TimeFormat=1", kSecurityService));
}

TEST_F(ManagedClockOnRecordingParts, ReportsTheZonesIdWhenItIsSetByIndex) {
  start();
  EXPECT_THAT(accepted("daylight-save-zone-index", "9"),
              ElementsAre("store DaylightSavingZoneIDDevice=9", "report daylight-save-zone-id=9",
                          kRefreshStarts, kSecurityService));
}

TEST_F(ManagedClockOnRecordingParts, StoresTheServerThenTriesTheClientThenShowsWhoSetsTheTime) {
  const support::LogCapture log(5);
  start();
  ASSERT_TRUE(log.waitForPart("NTP Client Thread has been started"));
  const plugin::StartUpLog lines(journal);
  for (const auto& [server, state] : {std::pair{"192.0.2.1", "4"}, {"0.0.0.0", "0"}}) {
    EXPECT_THAT(accepted("sntp-addr", server),
                ElementsAre(std::string("store SNTPaddress=") + server, "log 5 start NTP client",
                            std::string("item state time ") + state, kSecurityService));
  }
}

TEST_F(ManagedClockOnRecordingParts, LeavesTheClientAloneWhenTheServerIsRefused) {
  start();
  const support::LogCapture log(5);
  for (const auto& [server, state] : {std::pair{"no host", "4"}, {"[::1]", "4"}, {"", "0"}}) {
    EXPECT_THAT(refused("sntp-addr", server),
                ElementsAre(std::string("item state time ") + state, kSecurityService));
  }
  EXPECT_FALSE(log.has("start NTP client"));
}

TEST_F(ManagedClockOnRecordingParts, TakesARecordWithoutAValueForAnEmptyOne) {
  start();
  const support::LogCapture log(5);
  ManageableData record = conformance::recordOf("ntp-secret");
  EXPECT_TRUE(service->setData(record));
  EXPECT_THAT(journal.take(), ElementsAre("store NTPsharedSecret=", kSecurityService));
  EXPECT_TRUE(log.has(5, "setData: \"ntp-secret\": \"\""));
}

TEST_F(ManagedClockOnRecordingParts, LogsNoGetsAndSetsBelowLevelFive) {
  start();
  const support::LogCapture log(4);
  for (const char* const key : {"time-format", "unknown"}) {
    set(key, "1");
    support::get(*service, key);
  }
  EXPECT_EQ(log.text(), "");
}

TEST_F(ManagedClockOnRecordingParts, StoresTheSecretThenTriesTheClient) {
  start();
  const support::LogCapture log(5);
  EXPECT_THAT(accepted("ntp-secret", "x"),
              ElementsAre("store NTPsharedSecret=x", kSecurityService));
  EXPECT_EQ(log.count("start NTP client"), 1U);
}

TEST_F(ManagedClockOnRecordingParts, BracketsAChangeOfTheClock) {
  start();
  EXPECT_THAT(accepted("time", "2031-01-02T03:04:05+00:00"),
              ElementsAre("begin clock change", "start 3", "start 2", "end clock change",
                          kSecurityService));
  EXPECT_THAT(accepted("simple-time", "10:20"),
              ElementsAre("begin clock change", "start 2", "end clock change", kSecurityService));
  EXPECT_THAT(accepted("simple-date", "01.02.2030"),
              ElementsAre("begin clock change", "start 3", "end clock change", kSecurityService));
  EXPECT_THAT(refused("simple-date", "01.02.2040"),
              ElementsAre("begin clock change", "end clock change", kSecurityService));
}

// A clock that starts before the physical interface is there looks for it with each set, until it
// is found. starts: the timers that announce the change.
TEST_F(ManagedClockOnRecordingParts, LooksForThePhysicalInterfaceUntilItIsThere) {
  using Lines = std::vector<std::string>;
  const struct {
    const char* key;
    const char* value;
    Lines starts;
  } table[] = {{"time", "2031-01-02T03:04:05+00:00", {"start 3", "start 2"}},
               {"simple-time", "10:20", {"start 2"}},
               {"simple-date", "01.02.2030", {"start 3"}}};
  for (const auto& row : table) {
    timers.add("PhysicalInterfaceServiceIfc", nullptr);
    start();
    Lines expected{"service PhysicalInterfaceServiceIfc"};
    expected.insert(expected.end(), row.starts.begin(), row.starts.end());
    expected.emplace_back(kSecurityService);
    EXPECT_EQ(accepted(row.key, row.value), expected) << row.key;
    timers.add("PhysicalInterfaceServiceIfc", &physical);
    expected.insert(expected.begin() + 1, "begin clock change");
    expected.insert(expected.end() - 1, "end clock change");
    EXPECT_EQ(accepted(row.key, row.value), expected) << row.key;
    expected.erase(expected.begin());
    EXPECT_EQ(accepted(row.key, row.value), expected) << row.key;
    end();
  }
}

TEST_F(ManagedClockOnRecordingParts, LooksForNothingWithATextThatCannotBeRead) {
  timers.add("PhysicalInterfaceServiceIfc", nullptr);
  start();
  for (const auto& [key, value] : {std::pair{"time", "2031-01-02"},
                                   {"time", "2031-13-02T03:04:05+00:00"},
                                   {"time", ""},
                                   {"simple-time", "???"},
                                   {"simple-date", ""}})
    EXPECT_THAT(refused(key, value), ElementsAre(kSecurityService)) << key << " " << value;
}

TEST_F(ManagedClockOnRecordingParts, ResetsBothFormatsAndReportsThem) {
  store.put("DateFormat", "1");
  store.put("TimeFormat", "1");
  start();
  EXPECT_TRUE(service->resetUserData());
  EXPECT_THAT(journal.take(),
              ElementsAre("user data date-format of 0?", "store DateFormat=0", kSecurityService,
                          "report date-format=0", "user data time-format of 0?",
                          "store TimeFormat=0", kSecurityService, "report time-format=0"));
  EXPECT_FALSE(service->resetUserData());  // nothing left to do
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(ManagedClockOnRecordingParts, ResetsOnlyUserData) {
  store.put("DateFormat", "1");
  store.put("TimeFormat", "1");
  management.setUserData("date-format", false);
  start();
  EXPECT_TRUE(service->resetUserData());
  EXPECT_THAT(journal.take(),
              ElementsAre("user data date-format of 0?", "user data time-format of 0?",
                          "store TimeFormat=0", kSecurityService, "report time-format=0"));
  management.setUserData("time-format", false);
  store.put("TimeFormat", "1");
  EXPECT_FALSE(service->resetUserData());
}

TEST(ManagedClockOfVariantThree, IsResetToTheDefaultsOfItsVariant) {
  support::Telephone telephone(3);
  telephone.switchOn();
  EXPECT_FALSE(telephone.management.reset());
  telephone.manage("date-format", "0");
  telephone.manage("time-format", "0");
  EXPECT_TRUE(telephone.management.reset());
  EXPECT_EQ(telephone.managed("date-format"), "2");
  EXPECT_EQ(telephone.managed("time-format"), "1");
}

// A listener may read the new value during the report: the management lock is free by then.
TEST(ManagedClockWithAListener, ReportsAResetWithoutTheManagementLock) {
  support::Telephone telephone;
  telephone.switchOn();
  telephone.manage("date-format", "1");
  std::string seen;
  telephone.management.onReport(
      [&](const std::string& key, const std::string& /*value*/) { seen = telephone.managed(key); });
  EXPECT_TRUE(telephone.management.reset());
  EXPECT_EQ(seen, "0");
}

TEST_F(ManagedClockOnRecordingParts, ResetsNoOtherSetting) {
  store.put("DaylightSavingMinutes", "30");
  store.put("TimezoneOffset", "3");
  start();
  EXPECT_FALSE(service->resetUserData());
  EXPECT_EQ(store.stored("DaylightSavingMinutes"), "30");
}

}  // namespace
