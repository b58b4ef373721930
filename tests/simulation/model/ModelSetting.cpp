// Setting the model's clock and zone, and keeping the time over a restart.

#include "simulation/model/ClockModel.h"
#include "simulation/model/Texts.h"

namespace simulation {

void ClockModel::byHand(std::int64_t instant) {
  setWall(instant);
  m_handOffset = within32(instant - m_uptime / 1000);
}

bool ClockModel::setDate(std::int64_t day, std::int64_t month, std::int64_t year) {
  const std::int64_t fullYear = year <= 99 ? year + 2000 : year;
  if (fullYear < 1970 || fullYear > 2037) return false;
  const bool daylight = m_zone.isDaylight(now());
  Civil local = localNow();
  local.year = fullYear;
  local.month = month;
  local.day = day;
  byHand(m_zone.instantOf(local, daylight));
  start(dateChanged);
  return true;
}

bool ClockModel::setTime(std::int64_t hours, std::int64_t minutes, std::int64_t seconds) {
  const bool daylight = m_zone.isDaylight(now());
  Civil local = localNow();
  local.hour = hours;
  local.minute = minutes;
  local.second = seconds;
  byHand(m_zone.instantOf(local, daylight));
  start(timeChanged);
  return true;
}

void ClockModel::setSeconds(std::int64_t seconds) {
  if (m_settings.hasServer()) return;
  m_timeReceived = false;
  if (!setWall(seconds)) complain("settimeofday failed");
}

// The system's time; its very first second counts as "now", as it does in every UTC text.
std::string ClockModel::saveFallback() {
  const std::int64_t system = floorOf(wallMs(), 1000);
  std::string text = utcText(system == 0 ? now() : within32(system));
  m_settings.setText("FallbackDateTime", m_settings.fallback, text);
  return text;
}

// The display minutes leave automatic daylight saving out; the zone's rule brings it in again.
Civil ClockModel::localOfUtc(Civil shown) const {
  shown.minute = within32(shown.minute + m_displayMinutes);  // the C library's field is as wide
  return m_zone.localAt(m_zone.instantOf(shown, false));
}

std::optional<Civil> ClockModel::localOfText(const std::string& utc) const {
  const auto instant = instantOfUtcText(utc);
  if (!instant) return std::nullopt;
  // A leap second is the 60th of its own minute, not the first of the next.
  const std::int64_t leap = utc.substr(17, 2) == "60" ? 1 : 0;
  Civil shown = readingAt(*instant - leap);
  shown.second += leap;
  return localOfUtc(shown);
}

void ClockModel::installZone() {
  m_tz.clear();
  if (m_settings.knowsZones()) {
    const ZoneOutcome outcome = timeZoneOf(m_settings.zoneSettings());
    m_tz = outcome.tz;
    m_displayMinutes = outcome.displayMinutes;
  }
  m_zone = Zone(m_tz);
  tellZone();
  m_script = "#!/bin/sh\n\nexport TZ=" + m_tz + "\n\n";
}

}  // namespace simulation
