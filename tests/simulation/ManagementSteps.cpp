// What management, the device and its store do in a life.

#include "simulation/Addresses.h"
#include "simulation/StepMaker.h"
#include "simulation/model/ClockModel.h"
#include "simulation/model/Texts.h"

namespace simulation {
namespace {

using Words = std::vector<std::string>;

const Words kKeys{"time",
                  "simple-time",
                  "simple-time",
                  "simple-date",
                  "simple-date",
                  "date-format",
                  "time-format",
                  "sntp-addr",
                  "sntp-addr",
                  "ntp-secret",
                  "sntp-tz-offset",
                  "sntp-tz-offset",
                  "sntp-tz-offset",
                  "daylight-save",
                  "daylight-save",
                  "daylight-save-minutes",
                  "time-source",
                  "daylight-save-zone-list",
                  "daylight-save-zone-index",
                  "daylight-save-zone-index",
                  "daylight-save-zone-text",
                  "daylight-save-zone-id",
                  "daylight-save-zone-id",
                  "auto-daylight-save",
                  "auto-daylight-save"};
const Words kUnknownKeys{"", "Time", "time ", "last-restart-date", "fallback"};
const Words kFormats{"0", "1", "2", "0", "1", "2", "3", "-1", "", "1x", " 2", "abc", "99999999999"};
const Words kFlags{"true", "false", "true", "false", "TRUE", "1", "", "true "};
const Words kMinutes{"60",   "60", "30", "0",          "-60",          "120", "20",
                     "1440", "45", "90", "2147483647", "-99999999999", "abc", ""};
const Words kSecrets{
    "",           "secret", "a & b < c > d", "two\nlines", "bell\x07", "\xc3\xa9t\xc3\xa9", "]]>",
    "\"quoted\"", " ",      "\ttab\r\n"};
const Words kOffsets{"0",     "1",     "-5",     "5.5", "-3.5", "5.75", "12.5",  "-12.5",
                     "12.75", "19800", "-18000", "",    "abc",  " 2",   "+3",    "0.5",
                     "-0.5",  "0.25",  "-0.75",  "nan", "inf",  "1e30", "-1e30", "7200",
                     "0.001", "8.1",   "50400",  "90",  "1,5"};
const Words kSimpleTimes{"",      "???",   "7:30",  "1",     "12",     "12:",   "99:99",
                         "-1:-5", " 9: 5", "ab:cd", "12.30", "123456", "23:59", "00:00"};
const Words kSimpleDates{"",           "???",      "1.1",        "32.01.2024",
                         "1234567890", "01.01",    "29.02.2023", "2024-1-1",
                         "12/31/",     "01.01.-5", "00.00.0000", "05.03.20249"};
const Words kZoneNumbers{"abc", "", "15", "-1", "99999999999", " 9", "12x", "4294967305"};
const Words kUtcTexts{"",
                      "2024-02-30T00:00:00+00:00",
                      "2024-13-01T00:00:00+00:00",
                      "2024-01-01T24:00:00+00:00",
                      "2024-01-01T00:00:00",
                      "2024-01-01 00:00:00+00:00",
                      "2024-01-01T00:00:00+24:00",
                      "2016-12-31T23:59:60+00:00",
                      "2024-01-01T00:00:00+00:00 ",
                      "0020-05-05T05:05:05+00:00",
                      "2099-01-01T00:00:00+00:00",
                      "1969-12-31T00:00:00-00:30"};

}  // namespace

Step StepMaker::set(const ClockModel& model) {
  const std::string chosen = key();
  return {Act::set, {}, {chosen, valueFor(chosen, model)}, {}};
}

Step StepMaker::get(const ClockModel&) {
  return {Act::get, {}, {key()}, {}};
}

Step StepMaker::reset(const ClockModel&) {
  return {Act::reset, {}, {}, {}};
}

std::string StepMaker::key() {
  return m_chance.oneIn(40) ? m_chance.oneOf(kUnknownKeys) : m_chance.oneOf(kKeys);
}

std::string StepMaker::valueFor(const std::string& key, const ClockModel& model) {
  if (key == "time") return utc(model);
  if (key == "simple-time") return simpleTime();
  if (key == "simple-date") return simpleDate(model);
  if (key == "date-format" || key == "time-format" || key == "time-source")
    return m_chance.oneOf(kFormats);
  if (key == "sntp-addr") return std::string(m_chance.oneOf(kAddresses).text);
  if (key == "sntp-tz-offset") return offset();
  if (key == "daylight-save" || key == "auto-daylight-save") return m_chance.oneOf(kFlags);
  if (key == "daylight-save-minutes") return m_chance.oneOf(kMinutes);
  if (key == "daylight-save-zone-index" || key == "daylight-save-zone-id")
    return m_chance.oneIn(6) ? m_chance.oneOf(kZoneNumbers)
                             : std::to_string(m_chance.between(0, 14));
  return m_chance.oneOf(kSecrets);
}

std::string StepMaker::utc(const ClockModel& model) {
  if (m_chance.oneIn(4)) return m_chance.oneOf(kUtcTexts);
  std::string text = utcText(aroundMs(model) / 1000);
  if (m_chance.oneIn(2)) {
    text.resize(19);
    text +=
        print("%c%02d:%02d", m_chance.oneIn(2) ? '-' : '+',
              static_cast<int>(m_chance.between(0, 14)), static_cast<int>(m_chance.between(0, 59)));
  }
  return text;
}

std::string StepMaker::simpleTime() {
  if (m_chance.oneIn(2)) return m_chance.oneOf(kSimpleTimes);
  return timeText(m_chance.between(0, 23), m_chance.between(0, 59), 0);
}

// Mostly in the format that holds, sometimes in another.
std::string StepMaker::simpleDate(const ClockModel& model) {
  if (m_chance.oneIn(4)) return m_chance.oneOf(kSimpleDates);
  const Civil day = model.zone().localAt(aroundMs(model) / 1000);
  const int format =
      m_chance.oneIn(10) ? static_cast<int>(m_chance.between(0, 2)) : model.settings().dateFormat;
  return fullDateText(day, format);
}

std::string StepMaker::offset() {
  if (m_chance.oneIn(2)) return m_chance.oneOf(kOffsets);
  return print("%g", static_cast<double>(m_chance.between(-50, 50)) / 4.0);
}

Step StepMaker::deviceValue(const ClockModel&) {
  static const std::vector<std::vector<std::string>> changes{
      {"interface-status", "up"},
      {"interface-status", "up"},
      {"interface-status", "down"},
      {"interface-status", "UP"},
      {"dhcp-enabled", "true"},
      {"dhcp-enabled", "false"},
      {"dhcp-enabled", "true"},
      {"mobility-user-data-update", "all"},
      {"mobility-user-data-update", "unmanaged"},
      {"mobility-user-data-update", "managed"},
      {"related-software-type", "Velmora SIP"},
      {"related-software-type", "Velmora QEX"},
      {"related-software-type", "Velmora QEX"},
      {"related-software-type", "Velmora TDM"},
      {"related-software-type", "velmora qex"},
      {"mac-addr", "0001E3A1B2C3"},
      {"mac-addr", "0001e3a1b2c3"},
      {"mac-addr", "00:01:E3:A1:B2"},
      {"mac-addr", "0001E3A1B2CX"},
      {"backlight", "on"}};
  return {Act::deviceValue, {}, m_chance.oneOf(changes), {}};
}

// What a user who logs on brings along, and what a set from outside could leave behind.
Step StepMaker::outsideStore(const ClockModel&) {
  static const Words formatKeys{"DateFormat", "TimeFormat"};
  static const Words otherKeys{"TimezoneOffset", "DaylightSavingZoneIDDevice",
                               "DaylightSavingMinutes", "QexTimeSource"};
  if (!m_chance.oneIn(4)) {
    return {Act::outsideStore, {}, {m_chance.oneOf(formatKeys), m_chance.oneOf(kFormats)}, {}};
  }
  const auto value = std::to_string(m_chance.between(-1, 16));
  return {Act::outsideStore, {}, {m_chance.oneOf(otherKeys), value}, {}};
}

}  // namespace simulation
