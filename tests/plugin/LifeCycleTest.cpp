// The service from construction to destruction: its calls to the framework, in order.

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>

#include "ManageableData.h"
#include "plugin/RecordingTelephone.h"
#include "support/RecordingServices.h"
#include "support/Telephone.h"
#include "support/WaitingCall.h"

namespace {

using plugin::RecordedStart;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST_F(RecordedStart, RunsTheTwelveStepsOfStartUpInOrder) {
  store.put("FallbackDateTime", "2030-01-02T03:30:00+00:00");
  management.setValue("interface-status", "up");
  start();
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

TEST_F(RecordedStart, SetsTheClockToTheSavedTimeBeforeTheFirstTimer) {
  store.put("FallbackDateTime", "2030-01-02T05:30:00+02:00");  // the offset is applied
  std::string atFirstTimer;
  timers.onCall = [&](const std::string& call) {
    if (atFirstTimer.empty() && call.rfind("create", 0) == 0) atFirstTimer = service->getUTCTime(0);
  };
  start();
  EXPECT_EQ(atFirstTimer, "2030-01-02T03:30:00+00:00");
  end();  // while atFirstTimer exists
}

TEST_F(RecordedStart, KeepsItsClockWhenTheSavedTimeIsNotAUtcString) {
  ASSERT_TRUE(clock.setWall(std::chrono::seconds{1'000'000}));
  store.put("FallbackDateTime", "yesterday");
  start();
  EXPECT_EQ(service->getTimeVal(), 1'000'000);
  EXPECT_TRUE(log.has(2, "init: FallbackTime \"yesterday\" is not a UTC string"));
}

TEST_F(RecordedStart, StartsNoNtpClientUnlessTheNetworkIsExactlyUp) {
  for (const char* const status : {"down", "", "UP", "up ", "upper", " up", "backup", "true"}) {
    management.setValue("interface-status", status);
    start();
    EXPECT_THAT(journal.take(), Not(Contains("log 5 start NTP client"))) << status;
    end();
  }
}

TEST_F(RecordedStart, MakesTheTimeItemReadOnlyIfThereIsAServer) {
  for (const auto& [server, state] :
       {std::pair{"192.0.2.1", "4"}, {"::", "0"}, {"0.0.0.0", "0"}, {"", "0"}}) {
    store.put("SNTPaddress", server);
    start();
    EXPECT_THAT(journal.take(), Contains(std::string("item state time ") + state)) << server;
    end();
  }
}

TEST_F(RecordedStart, PassesTheSoftwareTypeToTheSettings) {
  management.setValue("related-software-type", "Velmora QEX");
  start();
  // This type has no zone until a time source is chosen.
  EXPECT_THAT(journal.take(), Contains("observer zone "));
}

TEST_F(RecordedStart, DeletesEveryTimerAtTheEnd) {
  management.setValue("mac-addr", "0001E3A1B2C3");
  start();
  timers.pass(std::chrono::hours{1});  // now there is a restart timer, too
  EXPECT_EQ(timers.timers(), 7U);
  journal.take();
  end();
  EXPECT_EQ(timers.timers(), 0U);
  const auto lines = journal.take();
  EXPECT_THAT(lines, Contains("delete 1"));
  EXPECT_THAT(lines, Not(Contains(testing::HasSubstr("observer"))));
}

TEST_F(RecordedStart, CanDestroyAServiceThatWasNeverStarted) {
  service = std::make_unique<ClockService>();
  service.reset();
  EXPECT_THAT(journal.lines(), IsEmpty());
  EXPECT_FALSE(log.hasPart("Cannot open"));
}

TEST_F(RecordedStart, IgnoresRunShutdownHookSwitchAndAlarms) {
  start();
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

// The observer keeps the listener in the middle of an update. The destruction must wait for it,
// because the update starts a timer and saves the time.
TEST_F(RecordedStart, CanDestroyTheServiceWhileTheListenerIsInAnUpdate) {
  start();
  std::atomic<bool> inUpdate{false};
  std::atomic<bool> held{true};
  observer.onEvent = [&] {
    inUpdate = true;
    inUpdate.notify_all();
    held.wait(true);
  };
  pipe.report(1'700'000'000);
  inUpdate.wait(false);
  journal.take();
  {
    const support::WaitingCall destruction([this] { end(); });
    EXPECT_TRUE(destruction.waits());
    EXPECT_THAT(journal.take(), IsEmpty());
    held = false;
    held.notify_all();
  }
  const auto lines = journal.take();
  EXPECT_THAT(lines, testing::IsSupersetOf({"start 1", "delete 1"}));
  EXPECT_LT(std::find(lines.begin(), lines.end(), "start 1"),
            std::find(lines.begin(), lines.end(), "delete 1"));
  EXPECT_TRUE(log.hasPart("sntpTimeChanged: FallbackTime is"));  // the update finished
  EXPECT_TRUE(log.hasPart("NTP Client Thread finished"));
}

TEST(Factory, MakesANewServiceEachTime) {
  const std::unique_ptr<Service> first(createClockService());
  const std::unique_ptr<Service> second(createClockService());
  EXPECT_NE(dynamic_cast<ClockService*>(first.get()), nullptr);
  EXPECT_NE(first.get(), second.get());
}

}  // namespace
