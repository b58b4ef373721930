// A framework without some of its services: the clock runs without what they provide.

#include <gmock/gmock.h>

#include "plugin/RecordingTelephone.h"
#include "support/ManagedData.h"
#include "support/RecordingServices.h"
#include "support/Telephone.h"

namespace {

using plugin::RecordedStart;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST_F(RecordedStart, WithoutAContextHasNoTimers) {
  startWith(nullptr);
  const auto lines = journal.take();
  EXPECT_THAT(lines,
              ElementsAre("log 2 Serious error, no svcRteCntxt available", "observer zone LOC00:00",
                          "log 5 NTP Client Thread has been started"));
  EXPECT_EQ(support::zoneScript(), "#!/bin/sh\n\nexport TZ=LOC00:00\n\n");
}

TEST_F(RecordedStart, WithoutAContextIgnoresTimers) {
  startWith(nullptr);
  journal.take();
  log.clear();
  for (const int timer : {-1, 1, 2, 3, 4, 5, 6, 7}) service->timerEvent(timer);
  EXPECT_THAT(journal.take(), testing::IsEmpty());
  EXPECT_THAT(log.entries(), testing::IsEmpty());
}

TEST_F(RecordedStart, WithoutAContextAnswersEverything) {
  startWith(nullptr);
  for (const char* const key : {"date-format", "sntp-addr", "time", "unknown"}) {
    ManageableData record = conformance::recordOf(key, "0");
    EXPECT_FALSE(service->getData(record)) << key;
    EXPECT_FALSE(service->setData(record)) << key;
  }
  for (const char* const key : {"mobility-user-data-update", "interface-status", "dhcp-enabled"}) {
    for (const char* const value : {"all", "up", "true"})
      support::announceChange(*service, key, value);
  }
  EXPECT_FALSE(service->resetUserData());
  EXPECT_EQ(service->getDate(), "01.01.70");
  EXPECT_EQ(service->getTime(), "00:00");
  service->handleSNTPClientUpdate(1);
  service->timerEvent(0);  // the id of a timer that does not exist
  EXPECT_EQ(service->setFallbackTime(), "1970-01-01T00:00:00+00:00");
  service->setTime(1000);
  EXPECT_TRUE(service->setDate(2, 3, 2004));
  EXPECT_TRUE(service->setTime(5, 6, 7));
  EXPECT_EQ(service->getUTCTime(0), "2004-03-02T05:06:07+00:00");
}

TEST_F(RecordedStart, LogsAMissingPhysicalInterfaceOnce) {
  timers.add("PhysicalInterfaceServiceIfc", nullptr);
  start();
  const auto lines = journal.take();
  EXPECT_THAT(lines, Contains("log 2 Cannot find PhysicalInterfaceServiceIfc\n").Times(1));
  EXPECT_THAT(lines, Not(Contains("subscribe (1,2,2)")));
  EXPECT_EQ(service->getDate(), "16.06.16");  // as on variant 0
}

TEST_F(RecordedStart, TreatsAServiceOfAnotherTypeAsMissing) {
  support::RecordingSecurityLog other;
  timers.add("PhysicalInterfaceServiceIfc", &other);
  timers.add("LocalMgmtIfc", &other);
  start();
  const auto lines = journal.take();
  EXPECT_THAT(lines, Contains("log 2 Cannot find PhysicalInterfaceServiceIfc\n"));
  EXPECT_THAT(lines, Not(Contains("register ClockMgmtId")));
}

TEST_F(RecordedStart, WithoutLocalManagementTreatsTheNetworkAsDown) {
  timers.add("LocalMgmtIfc", nullptr);
  start();
  const auto lines = journal.take();
  EXPECT_THAT(lines, Not(Contains("register ClockMgmtId")));
  EXPECT_THAT(lines, Not(Contains("observe dhcp-enabled")));
  EXPECT_THAT(lines, Not(Contains("log 5 start NTP client")));
  EXPECT_THAT(lines, Contains("create 1 -> 4"));  // a later step of the start
  EXPECT_FALSE(service->resetUserData());
}

TEST_F(RecordedStart, WithoutLocalManagementAcceptsSetsAndReportsNothing) {
  timers.add("LocalMgmtIfc", nullptr);
  store.put("DateFormat", "1");
  start();
  for (const auto& [key, value] :
       {std::pair{"sntp-addr", "192.0.2.1"}, {"daylight-save-zone-index", "9"}})
    EXPECT_TRUE(support::set(*service, key, value)) << key;
  EXPECT_EQ(store.stored("DaylightSavingZoneIDDevice"), "9");
  EXPECT_FALSE(service->resetUserData());
  EXPECT_EQ(store.stored("DateFormat"), "1");
}

TEST_F(RecordedStart, LogsThatTheStartCannotBeRecorded) {
  management.acceptSets = false;
  start();
  EXPECT_TRUE(log.has(2, "logStartUpUtc method failed to write last-restart-date"));
  EXPECT_THAT(journal.take(), Contains(testing::StartsWith("write last-restart-date")).Times(1));
}

TEST_F(RecordedStart, WithoutAStoreHasDefaultsAndRefusesSets) {
  timers.add("DataAccessServiceIfc", nullptr);
  start();
  EXPECT_EQ(service->getUTCTime(0), "2016-06-16T00:00:00+00:00");
  EXPECT_FALSE(support::set(*service, "date-format", "1"));
}

TEST_F(RecordedStart, NeverUsesATimerThatCouldNotBeCreated) {
  for (const int refused : {0, -1}) {
    timers.refuseTimers(refused);
    start();
    for (int event = 0; event < 3; ++event) service->setTime(1, 2, 3);
    support::announceChange(*service, "dhcp-enabled", "");
    service->handleSNTPClientUpdate(1);
    end();
    const std::string id = " " + std::to_string(refused);
    for (const char* const call : {"start", "stop", "cancel", "delete"})
      EXPECT_THAT(journal.lines(), Not(Contains(call + id)));
  }
}

}  // namespace
