#pragma once

#include <array>
#include <cstdio>
#include <functional>
#include <string>

#include "ClockServiceObserverIfc.h"
#include "support/Journal.h"

namespace support {

// Records events in a journal: "time 03:00:00", "date 08.03.2026", "zone LOC-1:00".
// Owner: the test; outlives its registration. Thread: any.
class JournalObserver final : public ClockServiceObserverIfc {
 public:
  // name: put before each line, where several observers share the journal.
  explicit JournalObserver(Journal& journal, const std::string& name = {})
      : m_journal(journal), m_prefix(name.empty() ? name : name + " ") {}

  // Called in each event, before it is recorded.
  std::function<void()> onEvent;
  // Returns a text that is recorded after the zone in each zone event.
  std::function<std::string()> zoneDetail;

  void timezoneChangeEvent(std::string timezone) override {
    write("zone " + timezone + (zoneDetail ? zoneDetail() : ""));
  }
  void timeChangeEvent(int hours, int minutes, int seconds) override {
    write("time " + joined(':', hours, minutes, seconds));
  }
  void dateChangeEvent(int day, int month, int year) override {
    write("date " + joined('.', day, month, year));
  }
  void alarmClockEvent(int alarm) override { write("alarm " + std::to_string(alarm)); }

 private:
  static std::string joined(char separator, int a, int b, int c) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02d%c%02d%c%02d", a, separator, b, separator, c);
    return text.data();
  }
  void write(const std::string& event) {
    if (onEvent) onEvent();
    m_journal.add(m_prefix + event);
  }

  Journal& m_journal;
  const std::string m_prefix;
};

}  // namespace support
