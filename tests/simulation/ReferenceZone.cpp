// The reference's time zone, and the local time of UTC texts.

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "simulation/Reference.h"

namespace simulation {
namespace {

constexpr std::size_t kLongestZone = 49;

// Whole minutes, rounded toward zero and limited so that they can be negated. NaN is 0.
std::int64_t wholeMinutes(double minutes) {
  constexpr double kMost = 2147483647;
  return std::isnan(minutes) ? 0 : static_cast<std::int64_t>(std::clamp(minutes, -kMost, kMost));
}

// A TZ offset of minutes west of UTC. Less than an hour east has a sign only with daylight saving.
std::string hoursAndMinutes(std::int64_t west, bool keepsSign) {
  const std::int64_t size = std::abs(west);
  const bool hours = size >= 60;
  const bool minus = west < 0 && (hours || keepsSign);
  return print("%s%0*d:%02d", minus ? "-" : "", minus && hours ? 1 : 2, static_cast<int>(size / 60),
               static_cast<int>(size % 60));
}

std::string changeText(const ZoneRule::Change& change) {
  return print("M%d.%d.0/%02d:%02d", change.month, change.week, change.hour, change.minute);
}

}  // namespace

// Empty without automatic daylight saving or without a zone.
std::string Reference::zoneRule() const {
  const int zone = number("DaylightSavingZoneIDDevice");
  const bool automatic = m_memory.at("AutoDaylightSavingEnabledDevice") == "true";
  if (!automatic || zone < 1 || zone >= kZones) return {};
  const ZoneRule& rule = kZoneRules[zone - 1];
  return changeText(rule.begin) + "," + changeText(rule.end);
}

void Reference::installZone() {
  m_tz.clear();
  if (m_software != "Velmora QEX" || number("QexTimeSource") != 0) {
    const double hours = std::strtof(m_memory.at("TimezoneOffset").c_str(), nullptr);
    const bool daylight = m_memory.at("DaylightSavingActive") == "true";
    const std::int64_t west = wholeMinutes(hours * -60);
    const double shift = daylight ? number("DaylightSavingMinutes") : 0;
    const std::int64_t shifted = wholeMinutes(static_cast<double>(west) - shift);
    const std::string rule = daylight ? zoneRule() : "";
    m_tz = "LOC" + hoursAndMinutes(rule.empty() ? shifted : west, rule.empty() && daylight);
    if (!rule.empty()) m_tz += "DST" + hoursAndMinutes(shifted, true) + "," + rule;
    m_displayMinutes = static_cast<int>(rule.empty() ? -shifted : -west);
  }
  m_tz.resize(std::min(m_tz.size(), kLongestZone));
  m_inForce.emplace(m_tz);
  announce("zone " + m_tz + " in force: " + m_tz + " after " + m_script,
           "timezoneChangeEvent/0 timezoneChangeEventTimezone/0=\"" + m_tz + "\"");
  m_script = "#!/bin/sh\n\nexport TZ=" + m_tz + "\n\n";
}

// UTC texts are shown by adding the display minutes; automatic daylight saving comes on top.
std::optional<tm> Reference::localOf(const std::string& utc) const {
  const auto instant = instantOf(utc);
  if (!instant) return std::nullopt;
  return localAt(*instant + std::int64_t{60} * m_displayMinutes + timezone);
}

// All queries that take an argument. An invalid UTC text yields a record of zeroes.
void Reference::ask(const Step& step) {
  const auto& n = step.numbers;
  const auto local = localOf(step.texts[0]);
  tm shown = local.value_or(tm{});
  if (!local) shown.tm_mon = -1, shown.tm_year = -1900;
  const std::size_t format = static_cast<unsigned int>(number("DateFormat"));
  const char* const parsed = local ? "true" : "false";
  if (local) m_journal.add("time " + timeText(*local, number("TimeFormat")));
  m_journal.add(print("%s: time %d %d %d", parsed, shown.tm_hour, shown.tm_min, shown.tm_sec));
  m_journal.add(
      print("%s: date %d %d %d", parsed, shown.tm_mday, shown.tm_mon + 1, shown.tm_year + 1900));
  m_journal.add("date " + dateText(shown, format < 3 ? kDateMasks[format] : ""));
  m_journal.add("short date " + dateText(shown, format < 3 ? kShortDateMasks[format] : ""));
  m_journal.add("UTC " + utcText(n[0] == 0 ? now() : n[0]));
  const auto field = [&n](std::size_t i) { return static_cast<int>(n[i]); };
  m_journal.add(print("UTC %04d-%02d-%02dT%02d:%02d:%02d+00:00", field(6) + 1900, field(5),
                      field(4), field(1), field(2), field(3)));
  for (int alarm = 0; alarm < 2; ++alarm)
    m_journal.add("proxy ClockServiceObserverIfc at peer one");
  m_journal.add("-> a logic error");
}

}  // namespace simulation
