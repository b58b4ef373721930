#pragma once

#include <string>

// Receives changes of the clock. Register with ClockServiceIfc::observeTimeEvents.
// Owner: the observer's creator; never deleted through this interface. Thread: the one that changed
// the clock: the framework's or the NTP listener's. The slot order is part of the contract.
// An observer must not register or unregister from inside an event.
class ClockServiceObserverIfc {
 public:
  // The local time zone changed. timezone: the new POSIX TZ value, at most 49 characters; empty is
  // UTC.
  virtual void timezoneChangeEvent(std::string timezone) = 0;

  // Local time of day: at every full hour, and after the clock was set. Hours 0-23, minutes 0-59,
  // seconds 0-60.
  virtual void timeChangeEvent(int hours, int minutes, int seconds) = 0;

  // Local date: at every midnight, and after the clock was set. Day 1-31, month 1-12, four-digit
  // year.
  virtual void dateChangeEvent(int day, int month, int year) = 0;

  // The alarm of this identifier went off. Never raised: alarms are not implemented.
  virtual void alarmClockEvent(int alarm) = 0;

 protected:
  ~ClockServiceObserverIfc() = default;
};
