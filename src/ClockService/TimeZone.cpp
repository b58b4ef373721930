#include <cstdlib>
#include <ctime>
#include <ios>

#include "ClockService.h"
#include "ClockServiceDataHandler.h"
#include "DSTZoneRules.h"
#include "SemaphoreGuard.h"
#include "Storage.h"
#include "TimeZoneText.h"

namespace {

TimeZoneText::Settings zoneSettings(const ClockServiceDataHandler& data,
                                    const DSTZoneRules& rules) {
  TimeZoneText::Settings settings;
  settings.utcOffset = data.getTimezoneOffset();
  settings.daylightSaving = data.getDaylightSavingActive();
  settings.daylightMinutes = data.getDaylightSavingMinutes();
  settings.automatic = data.getAutomaticDaylightSavingActive();
  if (settings.automatic) rules.getDSTZoneRule(data.getDSTZoneID(), settings.rule);
  return settings;
}

}  // namespace

// Without settings the clock shows UTC. While time zones do not apply, TZ is empty, which also
// means UTC, and m_localOffsetMinutes keeps its value.
void ClockService::setTZValue() {
  TimeZoneText::LocalZone zone;
  if (timezoneEnabled()) {
    zone = TimeZoneText::localZone(m_dataHandler != nullptr
                                       ? zoneSettings(*m_dataHandler, *m_dstZoneRules)
                                       : TimeZoneText::Settings{});
    m_localOffsetMinutes = zone.offsetMinutes;
  }
  installTZ(zone.tz.data());
  notifyTimezoneChangeEvent(zone.tz.data());
  writeTZEnvironmentScript(zone.tz.data());
}

void ClockService::installTZ(const char* tz) {
  const SemaphoreGuard guard(m_environmentLock);
  setenv("TZ", tz, 1);
  tzset();
}

// For the other processes of the telephone. After a failure they keep the old zone until the next
// change.
void ClockService::writeTZEnvironmentScript(char* tz) {
  std::string script = TimeZoneText::script(tz);
  Storage storage;
  storage.init("setupTZ.sh", std::ios_base::in | std::ios_base::binary,
               std::ios_base::out | std::ios_base::binary);
  storage.clear();
  storage.store(nullptr, script.data(), static_cast<int>(script.size()));
  storage.shutdown();
}
