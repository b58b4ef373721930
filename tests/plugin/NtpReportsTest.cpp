// What the service does with the reports of the NTP client, and with changes of user data.

#include <gmock/gmock.h>

#include "plugin/RecordingTelephone.h"
#include "support/ManagedData.h"

namespace {

// Access to a private member of the service: an explicit instantiation may name it.
bool ClockService::*updateFallbackOnSntp();
template <bool ClockService::*Member>
struct Opened {
  friend bool ClockService::*updateFallbackOnSntp() { return Member; }
};
template struct Opened<&ClockService::m_updateFallbackOnSntp>;

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

// A running clock on recording parts, at 2030-01-02T03:30:00.
class ClockWithReports : public plugin::RecordedStart {
 protected:
  void startWith(Executable* physicalInterface) {
    timers.add("PhysicalInterfaceServiceIfc", physicalInterface);
    store.put("FallbackDateTime", "2030-01-02T03:30:00+00:00");
    start();
    journal.take();
  }
  std::vector<std::string> change(const std::string& key, const std::string& value) {
    support::announceChange(*management.agent, key, value);
    return journal.take();
  }
};

TEST_F(ClockWithReports, BracketsOnlyTheFirstTimeEvent) {
  startWith(&physical);
  EXPECT_FALSE(service->isTimeSourceSntp());
  EXPECT_TRUE(log.has(6, "isTimeSourceSntp: return 0"));
  service->handleSNTPClientUpdate(1);
  EXPECT_THAT(journal.take(),
              ElementsAre("begin clock change", "observer time 03:30:00", "end clock change",
                          "observer date 02.01.2030", "stop 1", "start 1",
                          "store FallbackDateTime=2030-01-02T03:30:00+00:00"));
  EXPECT_TRUE(service->isTimeSourceSntp());
  EXPECT_TRUE(log.has(6, "isTimeSourceSntp: return 1"));
  service->handleSNTPClientUpdate(2);
  EXPECT_THAT(journal.take(),
              ElementsAre("observer time 03:30:00", "observer date 02.01.2030", "stop 1", "start 1",
                          "store FallbackDateTime=2030-01-02T03:30:00+00:00"));
}

TEST_F(ClockWithReports, WorksWithoutThePhysicalInterface) {
  startWith(nullptr);
  service->handleSNTPClientUpdate(1);
  EXPECT_THAT(journal.take(),
              ElementsAre("observer time 03:30:00", "observer date 02.01.2030", "stop 1", "start 1",
                          "store FallbackDateTime=2030-01-02T03:30:00+00:00"));
}

TEST_F(ClockWithReports, SavesNoTimeWhenThatIsSwitchedOff) {
  startWith(nullptr);
  EXPECT_TRUE(service.get()->*updateFallbackOnSntp());
  service.get()->*updateFallbackOnSntp() = false;
  service->handleSNTPClientUpdate(1);
  EXPECT_THAT(journal.take(), ElementsAre("observer time 03:30:00", "observer date 02.01.2030"));
}

TEST_F(ClockWithReports, TakesTheTimeFromTheSystemAndNotFromTheReport) {
  startWith(&physical);
  ASSERT_TRUE(clock.setWall(std::chrono::seconds{1'709'168'523}));
  for (const long reported : {1L, static_cast<long>(0xFFFFFFFFUL), -1L, 0L}) {
    service->handleSNTPClientUpdate(reported);
    EXPECT_EQ(service->getUTCTime(0), "2024-02-29T01:02:03+00:00") << reported;
  }
}

TEST_F(ClockWithReports, ReceivesAReportThroughThePipe) {
  startWith(&physical);
  pipe.report(1'709'168'523);
  EXPECT_TRUE(log.waitForPart("sntpTimeChanged: FallbackTime is"));
  EXPECT_THAT(journal.take(), Contains("begin clock change").Times(1));
  pipe.report(1'709'168'524);
  EXPECT_TRUE(log.waitForPart("EPOC: 1709168524"));
}

TEST_F(ClockWithReports, ReportsEachFormatThatNewUserDataChangedDateFirst) {
  for (const char* const who : {"all", "unmanaged"}) {
    log.clear();  // of the other listener's start
    for (const char* const format : {"DateFormat", "TimeFormat"}) store.put(format, "0");
    startWith(&physical);
    store.put("DateFormat", "2");
    store.put("TimeFormat", "1");
    EXPECT_THAT(change("mobility-user-data-update", who),
                ElementsAre("report date-format=2", "report time-format=1"));
    EXPECT_THAT(change("mobility-user-data-update", who), IsEmpty());  // nothing new
    store.put("TimeFormat", "0");
    EXPECT_THAT(change("mobility-user-data-update", who), ElementsAre("report time-format=0"));
    store.silent = true;  // the default
    EXPECT_THAT(change("mobility-user-data-update", who), ElementsAre("report date-format=0"));
    store.silent = false;
    end();
  }
}

TEST_F(ClockWithReports, LeavesTheOtherSettingsAsTheyAreWhenUserDataChange) {
  startWith(&physical);
  store.put("TimezoneOffset", "5");
  store.put("DateFormat", "1");
  change("mobility-user-data-update", "all");
  EXPECT_EQ(support::get(*service, "sntp-tz-offset"), "0");
}

TEST_F(ClockWithReports, IgnoresOtherUserDataAndOtherKeys) {
  startWith(&physical);
  store.put("DateFormat", "2");
  for (const char* const value : {"", "ALL", "managed", "all ", "unmanaged "})
    EXPECT_THAT(change("mobility-user-data-update", value), IsEmpty()) << value;
  log.clear();
  for (const char* const key : {"", "mac-addr", "date-format", "Dhcp-enabled"}) {
    EXPECT_THAT(change(key, "all"), IsEmpty()) << key;
    EXPECT_TRUE(log.has(5, std::string("manageableDataChanged=\"") + key + "\""));
  }
  EXPECT_FALSE(log.has("start NTP client"));
}

TEST_F(ClockWithReports, StartsTheZoneTimerThenTheClientWhenDhcpChanges) {
  startWith(&physical);
  for (const char* const value : {"true", "false", ""}) {
    EXPECT_THAT(change("dhcp-enabled", value), ElementsAre("start 4", "log 5 start NTP client"))
        << value;
  }
}

}  // namespace
