#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "ClockService.h"
#include "plugin/OrderedTimers.h"
#include "support/JournalObserver.h"
#include "support/ListenerPipe.h"
#include "support/LogCapture.h"
#include "support/RecordingServices.h"
#include "support/ZoneGuard.h"

namespace plugin {

// A telephone whose parts record their calls in one journal. Its service is not started yet. The
// parts of support::Telephone are the host's own, which record nothing and order timers one way.
class RecordingTelephone : public testing::Test {
 protected:
  explicit RecordingTelephone(OrderedTimers::Order order = OrderedTimers::Order::ofCreation,
                              const std::string& observerName = {})
      : timers(clock, order), observer(journal, observerName) {
    host::setProcessClock(&clock);
    timers.add("DataAccessServiceIfc", &store);
    timers.add("PhysicalInterfaceServiceIfc", &physical);
    timers.add("LocalMgmtIfc", &management);
  }
  ~RecordingTelephone() override {
    end();
    host::setProcessClock(nullptr);
  }
  RecordingTelephone(const RecordingTelephone&) = delete;
  RecordingTelephone& operator=(const RecordingTelephone&) = delete;

  // Starts the service that the test has created, or a new one.
  void begin(Context* with) {
    pipe.renew();
    if (!service) service = std::make_unique<ClockService>();
    service->observeTimeEvents(&observer);
    service->initWith(with);
  }
  void end() {
    management.dropAgents();
    physical.dropSubscribers();
    pipe.release();
    service.reset();
  }
  void recordCalls() {
    timers.onCall = [this](const std::string& call) { journal.add(call); };
  }

  support::Journal journal;
  const support::ZoneGuard processZone{"UTC0"};
  host::VirtualClock clock;
  OrderedTimers timers;
  support::RecordingPhysical physical{journal, 0};
  support::RecordingManagement management{journal};
  support::RecordingStore store{journal};
  support::JournalObserver observer;
  support::ListenerPipe pipe;
  std::unique_ptr<ClockService> service;
};

// Adds some log lines of the start-up to the journal, between the calls to the framework.
class StartUpLog : public support::LogCapture {
 public:
  explicit StartUpLog(support::Journal& journal)
      : LogCapture(6, [&journal](const host::LogEntry& entry) {
          for (const char* const text :
               {"init: initial", "start NTP client", "NTP Client Thread has been", "Serious error",
                "Cannot find"}) {
            if (entry.text.rfind(text, 0) == 0)
              journal.add("log " + std::to_string(entry.level) + " " + entry.text);
          }
        }) {}
};

// A recording telephone that records from the first step of the start-up.
class RecordedStart : public RecordingTelephone {
 protected:
  RecordedStart() : RecordingTelephone(OrderedTimers::Order::ofCreation, "observer") {
    recordCalls();
  }

  void start() { startWith(&timers); }
  void startWith(Context* context) {
    begin(context);
    ASSERT_TRUE(log.waitForPart("NTP Client Thread has been started"));
  }

  StartUpLog log{journal};
};

}  // namespace plugin
