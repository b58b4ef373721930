#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "ClockService.h"
#include "plugin/JournalObserver.h"
#include "plugin/OrderedTimers.h"
#include "plugin/RecordingServices.h"
#include "plugin/ReportPipe.h"
#include "support/ZoneGuard.h"

namespace plugin {

// For tests that let time pass.
using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

// The timers of a service in order of creation; the last two are replaced with each use.
enum Timer : int { kFallback = 1, kTimeChanged, kDateChanged, kZoneRefresh, kHour, kMidnight };

// A clock whose timers are seen and fired by hand. It starts at 22:10:05 on 15 June 2030, UTC.
class ClockOnWatchedTimers : public testing::Test {
 protected:
  explicit ClockOnWatchedTimers(OrderedTimers::Order order = OrderedTimers::Order::ofCreation)
      : timers(clock, order) {
    host::setProcessClock(&clock);
    timers.add("DataAccessServiceIfc", &store);
    timers.add("PhysicalInterfaceServiceIfc", &physical);
    timers.add("LocalMgmtIfc", &management);
    store.items["FallbackDateTime"] = "2030-06-15T22:10:05+00:00";
  }
  ~ClockOnWatchedTimers() override {
    pipe.release();
    service.reset();
    host::setProcessClock(nullptr);
  }
  ClockOnWatchedTimers(const ClockOnWatchedTimers&) = delete;
  ClockOnWatchedTimers& operator=(const ClockOnWatchedTimers&) = delete;

  void start() {
    service = std::make_unique<ClockService>();
    service->observeTimeEvents(&observer);
    service->initWith(&timers);
    journal.take();
    timers.onCall = [this](const std::string& call) { journal.add(call); };
  }
  void startAt(const std::string& utc) {
    store.items["FallbackDateTime"] = utc + "+00:00";
    start();
  }
  void zone(int id, const std::string& offset) {
    store.items["TimezoneOffset"] = offset;
    store.items["DaylightSavingActive"] = "true";
    store.items["AutoDaylightSavingEnabledDevice"] = "true";
    store.items["DaylightSavingZoneIDDevice"] = std::to_string(id);
  }
  std::vector<std::string> expire(int timer) {
    service->timerEvent(timer);
    return journal.take();
  }
  // What observers hear, and nothing of the framework.
  std::vector<std::string> heard(std::chrono::nanoseconds duration) {
    timers.onCall = nullptr;
    timers.pass(duration);
    std::vector<std::string> events;
    for (const std::string& line : journal.take())
      if (line.rfind("time", 0) == 0 || line.rfind("date", 0) == 0 || line.rfind("zone", 0) == 0)
        events.push_back(line);
    return events;
  }

  Journal journal;
  const support::ZoneGuard processZone{"UTC0"};
  host::VirtualClock clock;
  OrderedTimers timers;
  RecordingPhysical physical{journal, 0};
  RecordingManagement management{journal};
  RecordingStore store{journal};
  JournalObserver observer{journal};
  ReportPipe pipe;
  std::unique_ptr<ClockService> service;
};

// The same clock on a framework that delivers equal expiries in the other order.
class ClockOnReversedTimers : public ClockOnWatchedTimers {
 protected:
  ClockOnReversedTimers() : ClockOnWatchedTimers(OrderedTimers::Order::reversed) {}
};

}  // namespace plugin
