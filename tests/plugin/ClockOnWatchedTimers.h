#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "plugin/RecordingTelephone.h"

namespace plugin {

// For tests that let time pass.
using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

// The timers of a service in order of creation. The last two are replaced each time they are armed.
enum Timer : int { kFallback = 1, kTimeChanged, kDateChanged, kZoneRefresh, kHour, kMidnight };

// A clock whose timers a test can watch and fire. It starts at 22:10:05 on 15 June 2030, UTC.
class ClockOnWatchedTimers : public RecordingTelephone {
 protected:
  explicit ClockOnWatchedTimers(OrderedTimers::Order order = OrderedTimers::Order::ofCreation)
      : RecordingTelephone(order) {
    store.put("FallbackDateTime", "2030-06-15T22:10:05+00:00");
  }

  void start() {
    if (service) end();
    begin(&timers);
    journal.take();
    recordCalls();
  }
  void startAt(const std::string& utc) {
    store.put("FallbackDateTime", utc + "+00:00");
    start();
  }
  void zone(int id, const std::string& offset) {
    store.put("TimezoneOffset", offset);
    store.put("DaylightSavingActive", "true");
    store.put("AutoDaylightSavingEnabledDevice", "true");
    store.put("DaylightSavingZoneIDDevice", std::to_string(id));
  }
  std::vector<std::string> expire(int timer) {
    service->timerEvent(timer);
    return journal.take();
  }
  // Lets time pass; returns the events, without the calls to the framework.
  std::vector<std::string> heard(std::chrono::nanoseconds duration) {
    timers.onCall = nullptr;
    timers.pass(duration);
    std::vector<std::string> events;
    for (const std::string& line : journal.take()) {
      if (line.rfind("time", 0) == 0 || line.rfind("date", 0) == 0 || line.rfind("zone", 0) == 0)
        events.push_back(line);
    }
    return events;
  }
};

// The same clock on a framework that delivers equal expiries in the other order.
class ClockOnReversedTimers : public ClockOnWatchedTimers {
 protected:
  ClockOnReversedTimers() : ClockOnWatchedTimers(OrderedTimers::Order::reversed) {}
};

}  // namespace plugin
