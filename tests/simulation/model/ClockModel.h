#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "simulation/DeviceRandom.h"
#include "simulation/Journal.h"
#include "simulation/Step.h"
#include "simulation/model/SettingsModel.h"
#include "simulation/model/Zone.h"

namespace simulation {

// What the telephone's clock must do and say, reckoned without it: the expected side of a life.
// Time is in milliseconds; local time is reckoned from the TZ text. A step is taken with apply();
// the journal then has what must have happened, and snapshot() what must be answered now.
class ClockModel {
 public:
  ClockModel();

  void apply(const Step& step);
  [[nodiscard]] Lines take() { return m_journal.take(); }
  [[nodiscard]] Lines snapshot() const;

  [[nodiscard]] std::int64_t now() const;  // the service's time, seconds since 1970
  [[nodiscard]] std::int64_t wallMs() const { return m_wallAtZero + m_uptime; }
  [[nodiscard]] const Zone& zone() const { return m_zone; }
  [[nodiscard]] const SettingsModel& settings() const { return m_settings; }

 private:
  // In the order of start-up, which is the order of equal expiries until one is replaced.
  enum Purpose : std::size_t {
    fallbackTimer,
    timeChanged,
    dateChanged,
    zoneRefresh,
    timeSync,
    dateSync,
    restartClient,
    purposes
  };
  struct Timer {
    int id = 0;
    std::int64_t period = 0;
    std::optional<std::int64_t> due;
  };

  // ClockModel.cpp
  bool applyToTime(const Step& step);
  bool applyToManagement(const Step& step);
  bool applyToPeers(const Step& step);
  void applyToDevice(const Step& step);
  void answered(bool result) { m_journal.add(result ? "-> true" : "-> false"); }

  // ModelTime.cpp: clocks and timers
  void create(Purpose purpose, std::int64_t period);
  void start(Purpose purpose);
  void stop(Purpose purpose) { m_timers[purpose].due.reset(); }
  void replace(Purpose purpose, std::int64_t period);
  [[nodiscard]] std::optional<Purpose> earliest() const;
  void pass(std::int64_t ms);
  void fire(Purpose purpose);
  bool setWall(std::int64_t seconds);
  void expired(Purpose purpose);
  void stepHour(Purpose expiredOne);
  void stepDay();
  void armHour();
  void armMidnight();
  [[nodiscard]] std::int64_t today() const;

  // ModelEvents.cpp: observers
  bool observe(const std::string& name);
  bool unobserve(const std::string& name);
  void tell(const std::string& local, const std::string& remote);
  void tellTime();
  void tellDate();
  void tellZone();
  [[nodiscard]] static bool isPeer(const std::string& name) { return name.rfind("peer", 0) == 0; }

  // ModelSetting.cpp
  void byHand(std::int64_t instant);
  bool setDate(std::int64_t day, std::int64_t month, std::int64_t year);
  bool setTime(std::int64_t hours, std::int64_t minutes, std::int64_t seconds);
  void setSeconds(std::int64_t seconds);
  std::string saveFallback();
  [[nodiscard]] Civil localNow() const { return m_zone.localAt(now()); }
  [[nodiscard]] Civil localOfUtc(Civil shown) const;
  [[nodiscard]] std::optional<Civil> localOfText(const std::string& utc) const;
  void installZone();

  // ModelClient.cpp: network and NTP client
  void startClient();
  std::string serverAddress();
  void endClient();
  void armRestart();
  void seedOnce();
  unsigned int seedOf(const std::string& mac);
  void reported(std::int64_t seconds, bool setsClock);
  void deviceChanged(const std::string& key, const std::string& value);
  void reloadFormats();

  // ModelManagement.cpp
  [[nodiscard]] std::optional<std::string> value(const std::string& key) const;
  void asked(const std::string& key);
  bool setValue(const std::string& key, const std::string& value);
  std::optional<bool> applyValue(const std::string& key, const std::string& value);
  bool setUtc(const std::string& value);
  std::optional<bool> setSimpleTime(const std::string& value);
  std::optional<bool> setSimpleDate(const std::string& value);
  bool setServer(const std::string& value);
  bool setZone(int id, bool byIndex);
  bool refreshed(bool accepted);
  bool resetUser();
  bool resetOne(const char* key, int current, int usual, bool& result);
  void report(const std::string& key, const std::string& value);
  void bracketBegins();
  void bracketEnds();

  // ModelRemote.cpp: calls of other processes; the parameters of the reply, nothing without a reply
  void called(const Step& step);
  std::optional<std::string> answer(const Step& step);
  [[nodiscard]] std::optional<std::string> answerNow(const std::string& method) const;
  [[nodiscard]] std::optional<std::string> answerUtc(const Step& step) const;
  [[nodiscard]] std::optional<std::string> answerFields(const Step& step) const;
  std::optional<std::string> answerSet(const Step& step);
  std::optional<std::string> answerObserver(const Step& step);

  // ModelStartUp.cpp
  void restart(const Step& step);
  void forget();
  void restoreFallback();
  void startUp();
  void attachManagement();
  bool findPhysical();
  void complain(const std::string& text) { m_journal.add("log 2 ClockService: " + text); }

  // Of the device; outlives restarts.
  StoreModel m_store;
  std::map<std::string, std::string> m_values;
  std::map<std::string, bool> m_mayReset;
  std::optional<std::string> m_fallbackFile;
  bool m_launchFails = false;
  bool m_lookupsFail = false;
  int m_logLevel = 4;

  // Of one run of the service.
  Journal m_journal;
  SettingsModel m_settings;
  std::set<std::string> m_services;
  int m_variant = 0;
  bool m_physicalKnown = false;
  bool m_physicalSubscribed = false;
  bool m_securityKnown = false;
  bool m_managed = false;
  std::vector<std::string> m_observers;
  std::int64_t m_uptime = 0;
  std::int64_t m_wallAtZero = 0;
  std::array<Timer, purposes> m_timers;
  int m_lastTimer = 0;
  std::optional<std::int64_t> m_handOffset;  // seconds; set by hand
  std::string m_tz;
  std::string m_script;
  Zone m_zone;
  std::int64_t m_displayMinutes = 0;
  std::int64_t m_toldDay = 0;  // the local day of the last date event
  bool m_networkUp = false;
  bool m_timeReceived = false;
  bool m_clientRuns = false;
  bool m_seeded = false;
  DeviceRandom m_random;
};

}  // namespace simulation
