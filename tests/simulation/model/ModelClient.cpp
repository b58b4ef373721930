// The model's network, and what the NTP client is started with and reports.

#include "simulation/Addresses.h"
#include "simulation/model/ClockModel.h"
#include "simulation/model/Texts.h"

namespace simulation {

void ClockModel::startClient() {
  if (!m_networkUp || !m_settings.hasServer()) return;
  const std::string address = serverAddress();
  if (address.empty()) return;  // not a word, and a client that runs goes on
  const bool ipv6 = kindOf(address) == AddressKind::ipv6;
  const bool traced = m_logLevel == 6;
  const std::string line =
      "sbin/ntpclient -s -c 525600 -i 3600 -n 15 -h " + address + (ipv6 ? " -6" : " -4");
  m_journal.add("system log startNTPClient() => \" " + line + (traced ? " -L" : " NULL") +
                " NULL\"\n");
  endClient();
  m_journal.add((m_launchFails ? "cannot start " : "starts ") + line + (traced ? " -L" : "") +
                " under TZ=" + m_tz);
  m_clientRuns = !m_launchFails;
  if (m_launchFails) complain("ntpclient couldn't be started");
}

// A name is looked up at each start: empty when that fails.
std::string ClockModel::serverAddress() {
  const Address server = addressOf(m_settings.server);
  if (server.kind != AddressKind::name) return m_settings.server;
  m_journal.add("looks up " + m_settings.server);
  return m_lookupsFail ? std::string() : std::string(server.resolved);
}

void ClockModel::endClient() {
  if (m_clientRuns) m_journal.add("client ends");
  m_clientRuns = false;
}

void ClockModel::seedOnce() {
  if (!m_managed || m_seeded) return;
  m_seeded = true;
  const auto mac = m_values.find("mac-addr");
  if (mac == m_values.end()) return;
  m_random.seed(seedOf(mac->second));
}

// The last six hexadecimal digits of twelve; 0 for anything else.
unsigned int ClockModel::seedOf(const std::string& mac) {
  if (mac.size() != 12) return complain("invalid mac length"), 0;
  unsigned int seed = 0;
  for (const char c : mac.substr(6)) {
    const std::size_t digit = std::string("0123456789abcdef0123456789ABCDEF").find(c);
    if (digit == std::string::npos) return complain("unexpected character"), 0;
    seed = seed * 16 + static_cast<unsigned int>(digit % 16);
  }
  return seed;
}

void ClockModel::armRestart() {
  seedOnce();
  const double fraction = static_cast<double>(m_random.next()) / 2147483648.0;
  const auto seconds = static_cast<std::int64_t>(fraction * 600.0) + 1;
  replace(restartClient, seconds * 1000 + 600000);
}

void ClockModel::reported(std::int64_t seconds, bool setsClock) {
  if (setsClock) setWall(seconds);
  if (seconds == 0) return;
  const bool bracketed = !m_timeReceived && m_physicalKnown;
  m_timeReceived = true;
  if (bracketed) bracketBegins();
  tellTime();
  if (bracketed) bracketEnds();
  tellDate();
  start(fallbackTimer);
  saveFallback();
}

void ClockModel::deviceChanged(const std::string& key, const std::string& value) {
  m_values[key] = value;
  if (!m_managed) return;
  if (key == "interface-status") {
    m_networkUp = value == "up";
    if (m_networkUp) startClient();
  }
  if (key == "dhcp-enabled") {
    start(zoneRefresh);
    startClient();
  }
  if (key == "mobility-user-data-update" && (value == "all" || value == "unmanaged")) {
    reloadFormats();
  }
}

void ClockModel::reloadFormats() {
  const int date = m_settings.dateFormat;
  const int time = m_settings.timeFormat;
  m_settings.reloadFormats();
  if (m_settings.dateFormat != date) report("date-format", std::to_string(m_settings.dateFormat));
  if (m_settings.timeFormat != time) report("time-format", std::to_string(m_settings.timeFormat));
}

}  // namespace simulation
