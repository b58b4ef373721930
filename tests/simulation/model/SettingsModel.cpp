#include "simulation/model/SettingsModel.h"

#include <algorithm>
#include <cstdlib>

#include "simulation/Addresses.h"
#include "simulation/model/Texts.h"

namespace simulation {
namespace {

// The store's document cannot hold other control characters.
bool isStorable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 || c == '\t' || c == '\n' || c == '\r';
  });
}

float narrowed(double number) {
  return static_cast<float>(number);
}

}  // namespace

void SettingsModel::start(bool bigVariant, StoreModel* store) {
  m_big = bigVariant;
  m_store = store;
  fallback = "2016-06-16T00:00:00+00:00";
  server.clear();
  secret.clear();
  hoursEast = 0;
  daylightMinutes = 60;
  timeSource = softwareType = 0;
  automatic = daylight = m_big;
  zone = m_big ? 12 : 0;
  reloadFormats();
  load("FallbackDateTime", fallback);
  load("SNTPaddress", server);
  load("NTPsharedSecret", secret);
  if (const auto text = read("TimezoneOffset"))
    hoursEast = narrowed(std::strtod(text->c_str(), nullptr));
  load("DaylightSavingActive", daylight);
  load("DaylightSavingMinutes", daylightMinutes);
  load("QexTimeSource", timeSource);
  load("DaylightSavingZoneIDDevice", zone);
  load("AutoDaylightSavingEnabledDevice", automatic);
}

void SettingsModel::reloadFormats() {
  dateFormat = usualDateFormat();
  timeFormat = usualTimeFormat();
  load("DateFormat", dateFormat);
  load("TimeFormat", timeFormat);
}

bool SettingsModel::write(const std::string& key, const std::string& value) {
  if (m_store == nullptr || !isStorable(value)) return false;
  m_journal.add("store " + key + "=" + value + (m_store->refuses ? " refused" : ""));
  if (m_store->refuses) return false;
  m_store->items[key] = value;
  return true;
}

std::optional<std::string> SettingsModel::read(const char* key) const {
  if (m_store == nullptr || m_store->silent || m_store->items.count(key) == 0) return std::nullopt;
  return m_store->items.at(key);
}

void SettingsModel::load(const char* key, std::string& member) const {
  if (const auto text = read(key)) member = *text;
}

void SettingsModel::load(const char* key, int& member) const {
  if (const auto text = read(key)) member = leadingNumber(*text);
}

void SettingsModel::load(const char* key, bool& member) const {
  if (const auto text = read(key)) member = *text == "true";
}

bool SettingsModel::setText(const char* key, std::string& member, const std::string& value) {
  if (!write(key, value)) return false;
  member = value;
  return true;
}

bool SettingsModel::setNumber(const char* key, int& member, const std::string& value) {
  if (!write(key, value)) return false;
  member = leadingNumber(value);
  return true;
}

bool SettingsModel::setFlag(const char* key, bool& member, const std::string& value) {
  if ((value != "true" && value != "false") || !write(key, value)) return false;
  member = value == "true";
  return true;
}

bool SettingsModel::setServer(const std::string& value) {
  const AddressKind kind = kindOf(value);
  if (value == server || kind == AddressKind::wrong || kind == AddressKind::ipv6InBrackets) {
    return false;
  }
  return setText("SNTPaddress", server, value);
}

bool SettingsModel::setOffset(const std::string& value) {
  if (value.empty()) return false;
  float hours = narrowed(std::strtod(value.c_str(), nullptr));
  if (hours < -12.5F || hours > 12.5F) hours /= 3600.0F;
  if (hours <= hoursEast && hours >= hoursEast) return true;
  if (!write("TimezoneOffset", print("%g", static_cast<double>(hours)))) return false;
  hoursEast = hours;
  return true;
}

bool SettingsModel::hasServer() const {
  return !server.empty() && server != "0.0.0.0" && server != "::";
}

ZoneSettings SettingsModel::zoneSettings() const {
  return {hoursEast, daylight, daylightMinutes, automatic, zone};
}

std::string SettingsModel::offsetText() const {
  return print("%g", static_cast<double>(hoursEast));
}

void SettingsModel::learnSoftware(const std::string& name) {
  if (name == "Velmora SIP") softwareType = 1;
  if (name == "Velmora QEX") softwareType = 2;
  if (name == "Velmora TDM") softwareType = 3;
}

}  // namespace simulation
