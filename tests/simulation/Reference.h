#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "simulation/SimulatedDevice.h"
#include "simulation/Step.h"
#include "simulation/Tables.h"
#include "simulation/Texts.h"
#include "support/Journal.h"
#include "support/ZoneGuard.h"

namespace simulation {

// What the telephone must do and answer, calculated in another way than in the service: instants in
// milliseconds of uptime instead of timers, offsets of the C library instead of mktime, masks and
// strftime instead of positions, settings as the texts of the store.
// After apply() the journal has the expected events, and snapshot() the expected answers.
// Between two steps the process's TZ is that of both sides.
class Reference {
 public:
  void apply(const Step& step);
  [[nodiscard]] Lines take() { return m_journal.take(); }
  [[nodiscard]] Lines snapshot() const;

  [[nodiscard]] std::int64_t wallMs() const { return m_wallAtZero + m_uptime; }
  [[nodiscard]] int number(const char* storedKey) const {
    return leadingNumber(m_memory.at(storedKey));
  }

 private:
  // Timers. At the same instant, those before `hour` expire in this order, and the others in the
  // order in which they were armed.
  enum Moment { saveDue, timeSetDue, dateSetDue, zoneDue, hour, midnight, clientRestart };
  struct Due {
    std::int64_t at;
    int order;
  };

  // ReferenceTime.cpp: clocks, timers, events
  void applyToTime(const Step& step);
  void arm(Moment moment, std::int64_t delay);
  void armHour();
  void armMidnight();
  void pass(std::int64_t target);
  void fire();
  void hourPassed(bool isHour);
  void dayPassed();
  bool setWall(std::int64_t seconds);
  void setByHand(tm reading);
  bool setDate(std::int64_t day, std::int64_t month, std::int64_t year);
  bool setTime(std::int64_t hours, std::int64_t minutes, std::int64_t seconds);
  void setSeconds(std::int64_t seconds);
  std::string saveTime();
  void report(std::int64_t seconds, bool setsClock);
  void observe(const std::string& name, bool begins);
  void announce(const std::string& local, const std::string& remote);
  void announceTime();
  void announceDate();
  [[nodiscard]] std::int64_t now() const;
  [[nodiscard]] std::string today() const { return dateText(localAt(now()), "yyyy-mm-dd"); }

  // ReferenceZone.cpp
  void installZone();
  [[nodiscard]] std::string zoneRule() const;
  [[nodiscard]] std::optional<tm> localOf(const std::string& utc) const;
  void ask(const Step& step);

  // ReferenceSettings.cpp: settings and management
  void applyToManagement(const Step& step);
  void load(const Setting& setting);
  bool write(const Setting& setting, const std::string& value);
  bool put(const Setting& setting, const std::string& value);
  bool putOffset(const Setting& setting, const std::string& value);
  [[nodiscard]] std::optional<std::string> value(const std::string& key) const;
  bool set(const std::string& key, const std::string& value);
  bool apply(const std::string& key, const std::string& value);
  bool applySetting(const Setting& setting, const std::string& value, bool byIndex);
  bool applyReading(const std::string& key, const std::string& value);
  void reset();
  void reloadFormats();
  void reportValue(const std::string& key, const std::string& value);
  [[nodiscard]] const std::string& server() const { return m_memory.at("SNTPaddress"); }
  [[nodiscard]] bool hasServer() const;

  // Reference.cpp: start, restart, the NTP client, services of the device
  void applyToDevice(const Step& step);
  void restart(const Step& step);
  void startUp(const std::string& tz);
  void restoreSavedTime();
  void attachManagement();
  void startClient();
  void endClient();
  void armClientRestart();
  void changeValue(const std::string& key, const std::string& value);
  bool findPhysical();
  void answer(bool result) { m_journal.add(result ? "-> true" : "-> false"); }
  void logError(const std::string& text) { m_journal.add("log 2 ClockService: " + text); }
  [[nodiscard]] bool has(ServiceRow row) const { return m_services.count(kServices[row]) > 0; }

  // The device: survives restarts.
  std::map<std::string, std::string> m_store;
  std::map<std::string, std::string> m_values;
  std::map<std::string, bool> m_mayReset;
  std::map<Act, bool> m_trouble;
  std::optional<std::string> m_fallbackFile;
  std::string m_script;
  int m_logLevel = 4;

  // One run of the service.
  support::Journal m_journal;
  std::optional<support::ZoneGuard> m_inForce;  // while a step is applied
  std::map<std::string, std::string> m_memory;  // settings by storage key
  std::set<std::string> m_services;
  bool m_big = false;  // variant 2 to 4
  int m_variant = 0;
  bool m_hasStore = false;
  bool m_physicalKnown = false;
  bool m_subscribed = false;
  bool m_securityKnown = false;
  bool m_managed = false;
  std::string m_software;
  std::vector<std::string> m_observers;
  std::int64_t m_uptime = 0;  // ms
  std::int64_t m_wallAtZero = 0;
  std::optional<std::int64_t> m_handOffset;  // seconds; the clock was set by hand
  std::map<Moment, Due> m_due;
  int m_armed = 0;
  std::string m_tz;
  int m_displayMinutes = 0;
  std::string m_announcedDate;
  bool m_networkUp = false;
  bool m_timeReceived = false;
  bool m_clientRuns = false;
  bool m_seeded = false;
  Random m_random;
};

}  // namespace simulation
