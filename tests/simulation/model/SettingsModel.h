#pragma once

#include <map>
#include <optional>
#include <string>

#include "simulation/Journal.h"
#include "simulation/model/TimeZoneOf.h"

namespace simulation {

// The store that outlives restarts, as the service sees it.
struct StoreModel {
  std::map<std::string, std::string> items;
  bool refuses = false;  // sets
  bool silent = false;   // gets
};

// The settings record: what is in memory, loaded from and written through to the store.
class SettingsModel {
 public:
  SettingsModel(StoreModel* store, Journal& journal) : m_store(store), m_journal(journal) {}

  // The record of a device that has just started. store: null where there is none.
  void start(bool bigVariant, StoreModel* store);
  void reloadFormats();

  // Each returns whether the value was accepted.
  bool setText(const char* key, std::string& member, const std::string& value);
  bool setNumber(const char* key, int& member, const std::string& value);
  bool setFlag(const char* key, bool& member, const std::string& value);
  bool setServer(const std::string& value);
  bool setOffset(const std::string& value);

  [[nodiscard]] bool hasServer() const;
  [[nodiscard]] bool knowsZones() const { return softwareType != 2 || timeSource != 0; }
  [[nodiscard]] ZoneSettings zoneSettings() const;
  [[nodiscard]] std::string offsetText() const;
  [[nodiscard]] int usualDateFormat() const { return m_big ? 2 : 0; }
  [[nodiscard]] int usualTimeFormat() const { return m_big ? 1 : 0; }
  void learnSoftware(const std::string& name);

  std::string fallback;
  int dateFormat = 0;
  int timeFormat = 0;
  std::string server;
  std::string secret;
  float hoursEast = 0;
  bool daylight = false;
  int daylightMinutes = 60;
  int timeSource = 0;
  int zone = 0;
  bool automatic = false;
  int softwareType = 0;

 private:
  bool write(const std::string& key, const std::string& value);
  std::optional<std::string> read(const char* key) const;
  void load(const char* key, std::string& member) const;
  void load(const char* key, int& member) const;
  void load(const char* key, bool& member) const;

  StoreModel* m_store;
  Journal& m_journal;
  bool m_big = false;
};

}  // namespace simulation
