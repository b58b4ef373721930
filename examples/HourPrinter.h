#pragma once

#include <cstdio>
#include <string>

#include "ClockServiceObserverIfc.h"

// An observer: prints the clock's events.
class HourPrinter final : public ClockServiceObserverIfc {
 public:
  void timezoneChangeEvent(std::string zone) override { std::printf("zone %s\n", zone.c_str()); }
  void timeChangeEvent(int hours, int minutes, int /*seconds*/) override {
    std::printf("%02d:%02d\n", hours, minutes);
  }
  void dateChangeEvent(int day, int month, int year) override {
    std::printf("%04d-%02d-%02d\n", year, month, day);
  }
  void alarmClockEvent(int /*alarm*/) override {}  // never raised
};
