// The sixteen management keys, as the model has them.

#include <algorithm>

#include "simulation/model/ClockModel.h"
#include "simulation/model/Texts.h"
#include "simulation/model/ZoneTable.h"

namespace simulation {
namespace {

std::string flagText(bool flag) {
  return flag ? "true" : "false";
}

bool isRow(int number) {
  return number >= 0 && static_cast<std::size_t>(number) < kZones.size();
}

std::string zoneList() {
  std::string list;
  for (const ZoneRow& row : kZones) list += std::string(row.name) + ";";
  return list;
}

// Where day, month and year begin in a simple date, by format.
struct Places {
  std::size_t day, month, year;
};
constexpr Places kPlaces[] = {{0, 3, 6}, {8, 5, 0}, {3, 0, 6}};

}  // namespace

std::optional<std::string> ClockModel::value(const std::string& key) const {
  const SettingsModel& s = m_settings;
  const Civil local = localNow();
  if (key == "time") return utcText(now());
  if (key == "simple-time") return timeText(local.hour, local.minute, 0);
  if (key == "simple-date") return fullDateText(local, s.dateFormat);
  if (key == "date-format") return std::to_string(s.dateFormat);
  if (key == "time-format") return std::to_string(s.timeFormat);
  if (key == "sntp-addr") return s.server;
  if (key == "ntp-secret") return s.secret;
  if (key == "sntp-tz-offset") return s.offsetText();
  if (key == "daylight-save") return flagText(s.daylight);
  if (key == "daylight-save-minutes") return std::to_string(s.daylightMinutes);
  if (key == "time-source") return std::to_string(s.timeSource);
  if (key == "daylight-save-zone-list") return zoneList();
  if (key == "daylight-save-zone-index") return isRow(s.zone) ? std::to_string(s.zone) : "-1";
  if (key == "daylight-save-zone-id") return std::to_string(s.zone);
  if (key == "auto-daylight-save") return flagText(s.automatic);
  if (key != "daylight-save-zone-text") return std::nullopt;
  return isRow(s.zone) ? std::string(kZones[static_cast<std::size_t>(s.zone)].name) : "";
}

void ClockModel::asked(const std::string& key) {
  const std::string answer = value(key).value_or("refused");
  if (key == "simple-date" && answer.empty()) complain("getData: Invalid Date Format.\n");
  m_journal.add("-> " + answer);
}

bool ClockModel::setValue(const std::string& key, const std::string& value) {
  const std::optional<bool> accepted = applyValue(key, value);
  if (!accepted) return false;  // a text that is too short ends the request without a record
  m_securityKnown = m_securityKnown || m_services.count(Services::security) > 0;
  if (m_securityKnown) {
    m_journal.add(print("security %lld 4 1 5 3 %s ",
                        static_cast<long long>(floorOf(wallMs(), 1000)),
                        *accepted ? "done" : "failed") +
                  "ClockSettings set data " + key + "(" + value + ") by \"\" from \"\"");
  }
  return *accepted;
}

std::optional<bool> ClockModel::applyValue(const std::string& key, const std::string& value) {
  SettingsModel& s = m_settings;
  if (key == "time") return setUtc(value);
  if (key == "simple-time") return setSimpleTime(value);
  if (key == "simple-date") return setSimpleDate(value);
  if (key == "date-format") return s.setNumber("DateFormat", s.dateFormat, value);
  if (key == "time-format") return s.setNumber("TimeFormat", s.timeFormat, value);
  if (key == "sntp-addr") return setServer(value);
  if (key == "ntp-secret") {
    const bool accepted = s.setText("NTPsharedSecret", s.secret, value);
    if (accepted) startClient();
    return accepted;
  }
  if (key == "sntp-tz-offset") return refreshed(s.setOffset(value));
  if (key == "daylight-save")
    return refreshed(s.setFlag("DaylightSavingActive", s.daylight, value));
  if (key == "daylight-save-minutes")
    return refreshed(s.setNumber("DaylightSavingMinutes", s.daylightMinutes, value));
  if (key == "time-source") return refreshed(s.setNumber("QexTimeSource", s.timeSource, value));
  if (key == "daylight-save-zone-index") return setZone(leadingNumber(value), true);
  if (key == "daylight-save-zone-id") return setZone(leadingNumber(value), false);
  if (key == "auto-daylight-save")
    return refreshed(s.setFlag("AutoDaylightSavingEnabledDevice", s.automatic, value));
  return false;
}

bool ClockModel::refreshed(bool accepted) {
  if (accepted) start(zoneRefresh);
  return accepted;
}

bool ClockModel::setZone(int id, bool byIndex) {
  if (!isRow(id)) return false;
  const std::string text = std::to_string(id);
  const bool accepted = m_settings.setNumber("DaylightSavingZoneIDDevice", m_settings.zone, text);
  if (byIndex) report("daylight-save-zone-id", text);
  return refreshed(accepted);
}

bool ClockModel::setServer(const std::string& value) {
  const bool accepted = m_settings.setServer(value);
  if (accepted) startClient();
  const bool named = !value.empty() && value != "0.0.0.0" && value != "::";
  if (m_managed) m_journal.add(named ? "item time is 4" : "item time is 0");
  return accepted;
}

bool ClockModel::setUtc(const std::string& value) {
  const auto local = localOfText(value);
  if (!local) return false;
  bracketBegins();
  const bool dated = setDate(local->day, local->month, local->year);
  const bool accepted = dated && setTime(local->hour, local->minute, local->second);
  bracketEnds();
  return accepted;
}

std::optional<bool> ClockModel::setSimpleTime(const std::string& value) {
  if (value.empty() || value == "???") return false;
  if (value.size() < 3) return std::nullopt;
  bracketBegins();
  const bool accepted =
      setTime(leadingNumber(value.substr(0, 2)), leadingNumber(value.substr(3, 2)), 0);
  bracketEnds();
  return accepted;
}

std::optional<bool> ClockModel::setSimpleDate(const std::string& value) {
  if (value.empty() || value == "???") return false;
  int day = 0;
  int month = 0;
  int year = 0;
  if (m_settings.dateFormat >= 0 && m_settings.dateFormat <= 2) {
    const Places& at = kPlaces[m_settings.dateFormat];
    if (value.size() < std::max(at.day, at.year)) return std::nullopt;
    day = leadingNumber(value.substr(at.day, 2));
    month = leadingNumber(value.substr(at.month, 2));
    year = leadingNumber(value.substr(at.year, 4));
  }
  bracketBegins();
  const bool accepted = setDate(day, month, year);
  bracketEnds();
  return accepted;
}

bool ClockModel::resetUser() {
  bool result = false;
  resetOne("date-format", m_settings.dateFormat, m_settings.usualDateFormat(), result);
  resetOne("time-format", m_settings.timeFormat, m_settings.usualTimeFormat(), result);
  return result;
}

bool ClockModel::resetOne(const char* key, int current, int usual, bool& result) {
  const auto known = m_mayReset.find(key);
  if (!m_managed || current == usual || (known != m_mayReset.end() && !known->second)) return false;
  setValue(key, std::to_string(usual));
  report(key, std::to_string(usual));
  return result = true;
}

void ClockModel::report(const std::string& key, const std::string& value) {
  if (m_managed) m_journal.add("report " + key + "=" + value);
}

void ClockModel::bracketBegins() {
  if (findPhysical()) m_journal.add("clock change begins");
}

void ClockModel::bracketEnds() {
  if (m_physicalKnown) m_journal.add("clock change ends");
}

}  // namespace simulation
