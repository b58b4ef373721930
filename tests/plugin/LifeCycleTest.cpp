// The service from its construction to its end: what it asks of the framework, in which order, and
// how it lives with a framework that lacks something.

#include <gmock/gmock.h>

#include <thread>

#include "ClockService.h"
#include "ManageableData.h"
#include "platform/LogBook.h"
#include "plugin/JournalObserver.h"
#include "plugin/OrderedTimers.h"
#include "plugin/RecordingSecurityLog.h"
#include "plugin/RecordingServices.h"
#include "plugin/ReportPipe.h"
#include "plugin/Telephone.h"
#include "support/LogCapture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// The start-up's own lines, put between what is asked of the framework.
class StartUpLines final : public host::LogSink {
 public:
  explicit StartUpLines(plugin::Journal& journal) : m_journal(journal) {}
  void write(const host::LogEntry& entry) override {
    for (const char* const text : {"init: initial", "start NTP client",
                                   "NTP Client Thread has been", "Serious error", "Cannot find"})
      if (entry.text.rfind(text, 0) == 0)
        m_journal.add("log " + std::to_string(entry.level) + " " + entry.text);
  }

 private:
  plugin::Journal& m_journal;
};

class StartUpLog {
 public:
  explicit StartUpLog(plugin::Journal& journal) : m_sink(std::make_shared<StartUpLines>(journal)) {
    host::LogBook::instance().addSink(m_sink);
  }
  ~StartUpLog() { host::LogBook::instance().removeSink(m_sink); }
  StartUpLog(const StartUpLog&) = delete;
  StartUpLog& operator=(const StartUpLog&) = delete;

 private:
  std::shared_ptr<StartUpLines> m_sink;
};

// A framework of recording parts; no service yet.
class RecordingFramework : public testing::Test {
 protected:
  RecordingFramework() {
    host::setProcessClock(&clock);
    context.onCall = [this](const std::string& call) { journal.add(call); };
    context.add("PhysicalInterfaceServiceIfc", &physical);
    context.add("LocalMgmtIfc", &management);
    context.add("DataAccessServiceIfc", &store);
  }
  ~RecordingFramework() override {
    end();
    host::setProcessClock(nullptr);
  }
  RecordingFramework(const RecordingFramework&) = delete;
  RecordingFramework& operator=(const RecordingFramework&) = delete;

  void start(Context* with) {
    pipe.renew();
    service->observeTimeEvents(&observer);
    service->initWith(with);
    ASSERT_TRUE(log.waitForPart("NTP Client Thread has been started"));
  }
  void end() {
    pipe.release();
    service.reset();
  }

  plugin::Journal journal;
  const StartUpLog startUpLog{journal};
  support::LogCapture log{6};  // sees each line after the journal did
  const support::ZoneGuard zone{"UTC0"};
  host::VirtualClock clock;
  plugin::OrderedTimers context{clock, plugin::OrderedTimers::Order::ofCreation};
  plugin::RecordingPhysical physical{journal, 0};
  plugin::RecordingManagement management{journal};
  plugin::RecordingStore store{journal};
  plugin::JournalObserver observer{journal, "observer"};
  plugin::ReportPipe pipe;
  std::unique_ptr<ClockService> service = std::make_unique<ClockService>();
};

TEST_F(RecordingFramework, SeesTheTwelveStepsOfStartUpInOrder) {
  store.items["FallbackDateTime"] = "2030-01-02T03:30:00+00:00";
  management.values["interface-status"] = "up";
  start(&context);
  EXPECT_THAT(
      journal.take(),
      ElementsAre("service PhysicalInterfaceServiceIfc", "hardware variant?",
                  "service DataAccessServiceIfc",
                  "log 5 init: initial FallbackTime is \"2030-01-02T03:30:00+00:00\"",
                  "create 43200000 -> 1", "start 1", "service LocalMgmtIfc", "register ClockMgmtId",
                  "read related-software-type", "read interface-status",
                  "observe mobility-user-data-update", "observe interface-status",
                  "observe dhcp-enabled", "write last-restart-date=2030-01-02T03:30:00+00:00",
                  "item state time 0", "create 1 -> 2", "create 1 -> 3", "create 1 -> 4",
                  "create 1800000 -> 5", "start 5", "create 73800000 -> 6", "start 6",
                  "observer zone LOC00:00", "subscribe (1,2,2)", "log 5 start NTP client",
                  "log 5 NTP Client Thread has been started"));
}

TEST_F(RecordingFramework, FindsTheClockSetToTheSavedTimeBeforeTheFirstTimer) {
  store.items["FallbackDateTime"] = "2030-01-02T05:30:00+02:00";  // the offset is applied
  std::string atFirstTimer;
  context.onCall = [&](const std::string& call) {
    if (atFirstTimer.empty() && call.rfind("create", 0) == 0) atFirstTimer = service->getUTCTime(0);
  };
  start(&context);
  EXPECT_EQ(atFirstTimer, "2030-01-02T03:30:00+00:00");
}

TEST_F(RecordingFramework, KeepsItsClockWhenTheSavedTimeIsNotAUtcString) {
  ASSERT_TRUE(clock.setWall(std::chrono::seconds{1'000'000}));
  store.items["FallbackDateTime"] = "yesterday";
  start(&context);
  EXPECT_EQ(service->getTimeVal(), 1'000'000);
}

TEST_F(RecordingFramework, DoesNotSpeakOfTheNtpClientWhileTheNetworkIsDown) {
  management.values["interface-status"] = "down";
  start(&context);
  EXPECT_THAT(journal.take(), Not(Contains("log 5 start NTP client")));
}

TEST_F(RecordingFramework, CountsOnlyTheExactWordUpAsNetwork) {
  management.values["interface-status"] = "UP";
  start(&context);
  EXPECT_THAT(journal.take(), Not(Contains("log 5 start NTP client")));
}

TEST_F(RecordingFramework, HasTheTimeItemReadOnlyWithAServerOnly) {
  store.items["SNTPaddress"] = "192.0.2.1";
  start(&context);
  EXPECT_THAT(journal.take(), Contains("item state time 4"));
}

TEST_F(RecordingFramework, HasTheTimeItemSettableWithTheAnyAddresses) {
  for (const char* const server : {"::", "0.0.0.0", ""}) {
    store.items["SNTPaddress"] = server;
    service = std::make_unique<ClockService>();
    start(&context);
    EXPECT_THAT(journal.take(), Contains("item state time 0")) << server;
    end();
  }
}

TEST_F(RecordingFramework, PassesTheSoftwareTypeToTheSettings) {
  management.values["related-software-type"] = "Velmora QEX";
  start(&context);
  // that type has no zone of its own until a time source is chosen
  EXPECT_THAT(journal.take(), Contains("observer zone "));
}

TEST_F(RecordingFramework, GetsNoTimersFromAServiceWithoutAContext) {
  start(nullptr);
  const auto lines = journal.take();
  EXPECT_THAT(lines,
              ElementsAre("log 2 Serious error, no svcRteCntxt available", "observer zone LOC00:00",
                          "log 5 NTP Client Thread has been started"));
  EXPECT_EQ(plugin::zoneScript(), "#!/bin/sh\n\nexport TZ=LOC00:00\n\n");
}

TEST_F(RecordingFramework, CanAskAServiceWithoutAContextEverything) {
  start(nullptr);
  ManageableData record;
  for (const char* const key : {"date-format", "sntp-addr", "time", "unknown"}) {
    record.setRootId(key, nullptr);
    record.populate(key, "0");
    EXPECT_FALSE(service->getData(record)) << key;
    EXPECT_FALSE(service->setData(record)) << key;
  }
  for (const char* const key : {"mobility-user-data-update", "interface-status", "dhcp-enabled"}) {
    record.setRootId(key, nullptr);
    for (const char* const value : {"all", "up", "true"}) {
      record.populate(key, value);
      service->manageableDataChanged(record);
    }
  }
  EXPECT_FALSE(service->resetUserData());
  EXPECT_EQ(service->getDate(), "01.01.70");
  EXPECT_EQ(service->setFallbackTime(), "1970-01-01T00:00:00+00:00");
  service->setTime(1000);
  EXPECT_TRUE(service->setDate(2, 3, 2004));
  EXPECT_TRUE(service->setTime(5, 6, 7));
  EXPECT_EQ(service->getUTCTime(0), "2004-03-02T05:06:07+00:00");
}

TEST_F(RecordingFramework, MissesThePhysicalInterfaceWithOneLine) {
  context.add("PhysicalInterfaceServiceIfc", nullptr);
  start(&context);
  const auto lines = journal.take();
  EXPECT_THAT(lines, Contains("log 2 Cannot find PhysicalInterfaceServiceIfc\n").Times(1));
  EXPECT_THAT(lines, Not(Contains("subscribe (1,2,2)")));
  EXPECT_EQ(service->getDate(), "16.06.16");  // as on variant 0
}

TEST_F(RecordingFramework, TakesAServiceOfAnotherTypeForAMissingOne) {
  plugin::RecordingSecurityLog other;
  context.add("PhysicalInterfaceServiceIfc", &other);
  context.add("LocalMgmtIfc", &other);
  start(&context);
  const auto lines = journal.take();
  EXPECT_THAT(lines, Contains("log 2 Cannot find PhysicalInterfaceServiceIfc\n"));
  EXPECT_THAT(lines, Not(Contains("register ClockMgmtId")));
}

TEST_F(RecordingFramework, MissesLocalManagementAndTakesTheNetworkForDown) {
  context.add("LocalMgmtIfc", nullptr);
  start(&context);
  const auto lines = journal.take();
  EXPECT_THAT(lines, Not(Contains("register ClockMgmtId")));
  EXPECT_THAT(lines, Not(Contains("observe dhcp-enabled")));
  EXPECT_THAT(lines, Not(Contains("log 5 start NTP client")));
  EXPECT_THAT(lines, Contains("create 1 -> 4"));  // and goes on
}

TEST_F(RecordingFramework, ServesDefaultsWithoutAStoreAndRefusesToStore) {
  context.add("DataAccessServiceIfc", nullptr);
  start(&context);
  EXPECT_EQ(service->getUTCTime(0), "2016-06-16T00:00:00+00:00");
  ManageableData record;
  record.setRootId("date-format", nullptr);
  record.populate("date-format", "1");
  EXPECT_FALSE(service->setData(record));
}

TEST_F(RecordingFramework, NeverHearsOfATimerThatCouldNotBeCreated) {
  for (const int refused : {0, -1}) {
    context.refuseTimers(refused);
    service = std::make_unique<ClockService>();
    start(&context);
    for (int event = 0; event < 3; ++event) service->setTime(1, 2, 3);
    ManageableData record;
    record.setRootId("dhcp-enabled", nullptr);
    service->manageableDataChanged(record);
    service->handleSNTPClientUpdate(1);
    end();
    const std::string id = " " + std::to_string(refused);
    for (const char* const call : {"start", "stop", "cancel", "delete"})
      EXPECT_THAT(journal.lines(), Not(Contains(call + id)));
  }
}

TEST_F(RecordingFramework, TakesEveryTimerBackAtTheEnd) {
  management.values["mac-addr"] = "0001E3A1B2C3";
  start(&context);
  context.pass(std::chrono::hours{1});  // now there is a restart timer, too
  EXPECT_EQ(context.timers(), 7U);
  journal.take();
  pipe.release();
  service.reset();
  EXPECT_EQ(context.timers(), 0U);
  const auto lines = journal.take();
  EXPECT_THAT(lines, Contains("delete 1"));
  EXPECT_THAT(lines, Not(Contains(testing::HasSubstr("observer"))));  // nobody is told
}

TEST_F(RecordingFramework, MayDestroyAServiceThatWasNeverStarted) {
  service.reset();
  EXPECT_THAT(journal.lines(), IsEmpty());
  EXPECT_FALSE(log.hasPart("Cannot open"));
}

TEST_F(RecordingFramework, GetsNothingFromRunShutdownHookSwitchAndAlarms) {
  start(&context);
  journal.take();
  std::string alarmTime = "07:00";
  service->run();
  service->shutdown();
  service->hookswitchEvent(PhysDefs::actionPressed);
  service->getSubscribingService();
  EXPECT_EQ(service->setAlarmClock(alarmTime, &observer), 0);
  EXPECT_EQ(service->setAlarmClock(alarmTime, nullptr), 0);
  EXPECT_FALSE(service->cancelAlarmClock(0));
  EXPECT_EQ(alarmTime, "07:00");
  EXPECT_THAT(journal.lines(), IsEmpty());
}

// The observer's event holds the listener in the middle of an update until the destruction has
// begun, which the deleted timer shows.
TEST_F(RecordingFramework, MayDestroyTheServiceWhileTheListenerIsInAnUpdate) {
  start(&context);
  std::atomic<bool> inUpdate{false};
  std::atomic<bool> ending{false};
  observer.onEvent = [&] {
    inUpdate = true;
    inUpdate.notify_all();
    ending.wait(false);
  };
  pipe.report(1'700'000'000);
  inUpdate.wait(false);
  context.onCall = [&](const std::string& call) {
    if (call.rfind("delete", 0) != 0) return;
    ending = true;
    ending.notify_all();
  };
  end();
  EXPECT_TRUE(log.hasPart("sntpTimeChanged: FallbackTime is"));  // the update came to its end
  EXPECT_TRUE(log.hasPart("NTP Client Thread finished"));
}

TEST(Factory, GivesANewServiceEachTime) {
  const std::unique_ptr<Service> first(createClockService());
  const std::unique_ptr<Service> second(createClockService());
  EXPECT_NE(dynamic_cast<ClockService*>(first.get()), nullptr);
  EXPECT_NE(first.get(), second.get());
}

}  // namespace
