// The model's start and restart.

#include <algorithm>

#include "simulation/model/ClockModel.h"
#include "simulation/model/Texts.h"

namespace simulation {

// In order, the client is ended; a power cut leaves no trace of anything but the store.
void ClockModel::restart(const Step& step) {
  if (step.numbers[0] == 1) endClient();
  m_variant = static_cast<int>(step.numbers[1]);
  const std::int64_t missing = step.numbers[2];
  m_services = {Services::physical, Services::management, Services::security, Services::store};
  if ((missing & Missing::physical) != 0) m_services.erase(Services::physical);
  if ((missing & Missing::management) != 0) m_services.erase(Services::management);
  if ((missing & Missing::security) != 0) m_services.erase(Services::security);
  if ((missing & Missing::store) != 0) m_services.erase(Services::store);
  m_uptime = 0;
  m_wallAtZero = step.numbers[3];
  startUp();
}

// What a process has before it starts.
void ClockModel::forget() {
  m_physicalKnown = m_physicalSubscribed = m_securityKnown = m_managed = false;
  m_networkUp = m_timeReceived = m_clientRuns = m_seeded = false;
  m_observers.clear();
  m_timers = {};
  m_lastTimer = 0;
  m_handOffset.reset();
  m_tz.clear();
  m_zone = Zone();
  m_displayMinutes = 0;
  m_random.seed(1);
}

void ClockModel::startUp() {
  forget();
  const bool big = findPhysical() && m_variant >= 2 && m_variant <= 4;
  m_settings.start(big, m_services.count(Services::store) > 0 ? &m_store : nullptr);
  restoreFallback();
  create(fallbackTimer, 43200000);
  start(fallbackTimer);
  m_managed = m_services.count(Services::management) > 0;
  if (m_managed) attachManagement();
  for (const Purpose purpose : {timeChanged, dateChanged, zoneRefresh}) create(purpose, 1);
  armHour();
  armMidnight();
  installZone();
  m_toldDay = today();  // in the zone just installed
  m_physicalSubscribed = m_physicalKnown;
  if (m_physicalSubscribed) m_journal.add("subscribes to 1 2 2");
  startClient();
}

void ClockModel::restoreFallback() {
  if (m_fallbackFile) {
    const std::string& content = *m_fallbackFile;
    const std::size_t begin = std::min(content.find_first_not_of(" \n\t"), content.size());
    const std::string token = content.substr(begin, content.find_first_of(" \n\t", begin) - begin);
    if (token.size() == 25) m_settings.setText("FallbackDateTime", m_settings.fallback, token);
    m_fallbackFile.reset();
  }
  const auto saved = instantOfUtcText(m_settings.fallback);
  if (!saved)
    return complain("init: FallbackTime \"" + m_settings.fallback + "\" is not a UTC string");
  setWall(*saved);
}

void ClockModel::attachManagement() {
  m_journal.add("agent ClockMgmtId");
  if (m_values.count("related-software-type") > 0)
    m_settings.learnSoftware(m_values["related-software-type"]);
  m_networkUp = m_values.count("interface-status") > 0 && m_values["interface-status"] == "up";
  for (const char* const key : {"mobility-user-data-update", "interface-status", "dhcp-enabled"})
    m_journal.add(std::string("observes ") + key);
  m_journal.add("management last-restart-date=" + utcText(now()));
  m_journal.add(m_settings.hasServer() ? "item time is 4" : "item time is 0");
}

bool ClockModel::findPhysical() {
  if (!m_physicalKnown) {
    m_physicalKnown = m_services.count(Services::physical) > 0;
    if (!m_physicalKnown) complain("Cannot find PhysicalInterfaceServiceIfc\n");
  }
  return m_physicalKnown;
}

}  // namespace simulation
