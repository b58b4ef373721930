// The reference's device: start and restart, the NTP client, and the expected answers.

#include "simulation/Reference.h"

#include <algorithm>
#include <cctype>

namespace simulation {

void Reference::apply(const Step& step) {
  m_inForce.emplace(m_tz);
  applyToTime(step);
  applyToManagement(step);
  applyToDevice(step);
  if (step.act == Act::ask) ask(step);
  m_inForce.reset();
}

void Reference::applyToDevice(const Step& step) {
  const bool on = !step.numbers.empty() && step.numbers[0] == 1;
  const std::string text = step.texts.empty() ? "" : step.texts[0];
  if (step.act >= Act::storeRefuses && step.act <= Act::lookupsFail) m_trouble[step.act] = on;
  if (step.act == Act::outsideStore) m_store[text] = step.texts[1];
  if (step.act == Act::mayReset) m_mayReset[text] = on;
  if (step.act == Act::deviceValue) changeValue(text, step.texts[1]);
  if (step.act == Act::logLevel) m_logLevel = static_cast<int>(step.numbers[0]);
  if (step.act == Act::fallbackFile) m_fallbackFile = text;
  if (step.act == Act::service && on) m_services.insert(text);
  if (step.act == Act::service && !on) m_services.erase(text);
  if (step.act == Act::restart) restart(step);
  const bool link = step.act == Act::jack && step.numbers[0] == 5 && step.numbers[1] == 1;
  if (link && m_subscribed) startClient();
  if (step.act == Act::invalidCall) {
    const bool decoded = text == "unknown";
    const std::string log = text == "nobody" ? "Could not cast executable to ClockServiceIfc"
                            : decoded        ? "Invalid Message, ClockTime"
                                             : "Failed to decode msg";
    m_journal.add("log 2 ClockServiceInvoker: " + log);
  }
}

// An orderly shutdown stops the NTP client. After a power cut only the store remains.
void Reference::restart(const Step& step) {
  if (step.numbers[0] == 1) endClient();
  m_variant = static_cast<int>(step.numbers[1]);
  m_services.clear();
  for (int row = 0; row < 4; ++row)
    if ((step.numbers[2] >> row & 1) == 0) m_services.insert(kServices[row]);
  m_wallAtZero = step.numbers[3];
  m_physicalKnown = m_securityKnown = m_networkUp = m_timeReceived = m_clientRuns = m_seeded =
      false;
  m_observers.clear();
  m_due.clear();
  m_uptime = m_armed = m_displayMinutes = 0;
  m_handOffset.reset();
  m_software.clear();
  m_random.seed(1);
  startUp(step.texts[0]);
}

// The first hour and midnight are still computed with the TZ that the process started with.
void Reference::startUp(const std::string& tz) {
  m_inForce.emplace(tz);
  m_big = findPhysical() && m_variant >= 2 && m_variant <= 4;
  m_hasStore = has(storeService);
  for (const Setting& setting : kSettings) load(setting);
  restoreSavedTime();
  arm(saveDue, 43'200'000);
  m_managed = has(managementService);
  if (m_managed) attachManagement();
  armHour();
  armMidnight();
  installZone();
  m_announcedDate = today();
  m_subscribed = m_physicalKnown;
  if (m_subscribed) m_journal.add("subscribe (1,2,2)");
  startClient();
}

void Reference::restoreSavedTime() {
  const std::string& saved = m_memory["FallbackDateTime"];
  if (m_fallbackFile) {
    std::string token = *m_fallbackFile;
    token.erase(0, token.find_first_not_of(" \n\t"));
    token.resize(std::min(token.find_first_of(" \n\t"), token.size()));
    if (token.size() == 25) write(kSettings[0], token);
    m_fallbackFile.reset();
  }
  if (const auto instant = instantOf(saved)) {
    setWall(*instant);
  } else {
    logError("init: FallbackTime \"" + saved + "\" is not a UTC string");
  }
}

void Reference::attachManagement() {
  m_journal.add("register ClockMgmtId");
  const std::string software = m_values["related-software-type"];
  for (const char* const known : {"Velmora SIP", "Velmora QEX", "Velmora TDM"})
    if (software == known) m_software = software;
  m_networkUp = m_values["interface-status"] == "up";
  for (const char* const key : {"mobility-user-data-update", "interface-status", "dhcp-enabled"})
    m_journal.add(std::string("observe ") + key);
  m_journal.add("write last-restart-date=" + utcText(now()));
  m_journal.add(hasServer() ? "item state time 4" : "item state time 0");
}

bool Reference::findPhysical() {
  m_physicalKnown = m_physicalKnown || has(physicalService);
  if (!m_physicalKnown) logError("Cannot find PhysicalInterfaceServiceIfc\n");
  return m_physicalKnown;
}

void Reference::startClient() {
  if (!m_networkUp || !hasServer()) return;
  const Address& named = addressOf(server());
  const Address& address = named.kind == Address::name ? addressOf(named.resolved) : named;
  if (named.kind == Address::name) m_journal.add("looks up " + server());
  if (named.kind == Address::name && (m_trouble[Act::lookupsFail] || *named.resolved == '\0'))
    return;  // a running client is left alone
  const std::string line = std::string("sbin/ntpclient -s -c 525600 -i 3600 -n 15 -h ") +
                           address.text + (address.kind == Address::ipv6 ? " -6" : " -4");
  const bool traced = m_logLevel == 6;
  const bool fails = m_trouble[Act::launchFails];
  m_journal.add("system log startNTPClient() => \" " + line + (traced ? " -L" : " NULL") +
                " NULL\"\n");
  endClient();
  m_journal.add((fails ? "cannot start " : "starts ") + line + (traced ? " -L" : "") +
                " under TZ=" + m_tz);
  m_clientRuns = !fails;
  if (fails) logError("ntpclient couldn't be started");
}

void Reference::endClient() {
  if (m_clientRuns) m_journal.add("client ends");
  m_clientRuns = false;
}

// 601 to 1200 s after a full hour. The first time, the generator is seeded from the MAC address:
// the last six of twelve hexadecimal digits.
void Reference::armClientRestart() {
  const std::string& mac = m_values["mac-addr"];
  if (m_managed && !m_seeded && !mac.empty()) {
    const bool whole = mac.size() == 12;
    const bool valid = whole && std::all_of(mac.begin() + 6, mac.end(),
                                            [](unsigned char c) { return std::isxdigit(c) != 0; });
    if (!valid) logError(whole ? "unexpected character" : "invalid mac length");
    m_random.seed(valid ? static_cast<unsigned int>(std::stoul(mac.substr(6), nullptr, 16)) : 0);
  }
  m_seeded = m_seeded || m_managed;
  arm(clientRestart, 601'000 + m_random.next() * std::int64_t{600} / 2147483648 * 1000);
}

void Reference::changeValue(const std::string& key, const std::string& value) {
  m_values[key] = value;
  if (!m_managed) return;
  const bool reloads = value == "all" || value == "unmanaged";
  if (key == "mobility-user-data-update" && reloads) reloadFormats();
  if (key == "interface-status") m_networkUp = value == "up";
  if (key == "dhcp-enabled") arm(zoneDue, 1);
  if ((key == "interface-status" && m_networkUp) || key == "dhcp-enabled") startClient();
}

Lines Reference::snapshot() const {
  const tm local = localAt(now());
  const std::size_t format = static_cast<unsigned int>(number("DateFormat"));
  Lines lines{"time " + timeText(local, number("TimeFormat")),
              "date " + dateText(local, format < 3 ? kDateMasks[format] : ""),
              "short date " + dateText(local, format < 3 ? kShortDateMasks[format] : ""),
              print("reading %d:%d:%d", local.tm_hour, local.tm_min, local.tm_sec),
              print("day %d.%d.%d", local.tm_mday, local.tm_mon + 1, local.tm_year + 1900),
              "seconds since 1970 " + std::to_string(within32(now())),
              "local seconds " + std::to_string(within32(now() + local.tm_gmtoff)),
              m_timeReceived ? "from NTP yes" : "from NTP no",
              "wall " + std::to_string(wallMs()),
              "TZ " + m_tz,
              "script " + m_script};
  for (const char* const key : kManagementKeys)
    lines.push_back(std::string(key) + " " + value(key).value_or("refused"));
  return lines;
}

}  // namespace simulation
