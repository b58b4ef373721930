#include "simulation/SteppedTelephone.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>

#include "ClockService.h"
#include "ManageableData.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/Texts.h"

namespace simulation {
namespace {

constexpr const char* kFallbackFile = "data/fallback_time.txt";

constexpr auto kQueries = support::Queries::notRecorded;

using std::chrono::milliseconds;

// Puts this process into the state of one that starts with this TZ.
void startProcess(const std::string& tz) {
  setenv("TZ", tz.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): nothing else runs
  tzset();
  device().random.seed(1);
}

}  // namespace

SteppedTelephone::SteppedTelephone() {
  device().journal = &m_journal;
  device().launchFails = false;
  device().lookupsFail = false;
  device().beforeWaiting = [this] { m_pipe.hangUp(); };
}

SteppedTelephone::~SteppedTelephone() {
  powerDown(false);
  unlink(kFallbackFile);
  device().beforeWaiting = nullptr;
}

void SteppedTelephone::powerDown(bool inOrder) {
  m_store.powerless = !inOrder;
  if (m_service && inOrder) m_service->shutdown();
  m_service.reset();
  m_peers.reset();
  m_context.reset();
  host::setProcessClock(nullptr);
  m_store.powerless = false;
  if (!inOrder) static_cast<void>(m_journal.take());
}

void SteppedTelephone::apply(const Step& step) {
  applyToTime(step);
  applyToClock(step);
  applyToManagement(step);
  applyToDevice(step);
}

void SteppedTelephone::applyToTime(const Step& step) {
  const auto& n = step.numbers;
  if (step.act == Act::pass) m_clock->advance(milliseconds(n[0]));
  if (step.act == Act::next && !m_clock->fireNext()) m_journal.add("no timer is armed");
  const bool jumps = step.act == Act::jump && !m_clock->setWall(milliseconds(n[0]));
  const bool reports =
      step.act == Act::report && n[1] == 1 && !m_clock->setWall(std::chrono::seconds(n[0]));
  if (jumps || reports) m_journal.add("the clock cannot be set");
  if (step.act == Act::report) m_pipe.report(static_cast<std::uint32_t>(n[0]));
}

void SteppedTelephone::applyToManagement(const Step& step) {
  const bool managed = m_management != nullptr && m_management->hasClock();
  if (step.act == Act::set) answer(set(step.texts[0], step.texts[1]));
  if (step.act == Act::get) m_journal.add("-> " + get(step.texts[0]));
  if (step.act == Act::reset) answer(managed ? m_management->reset() : m_service->resetUserData());
  if (step.act == Act::deviceValue) {
    m_values[step.texts[0]] = step.texts[1];
    m_management->setValue(step.texts[0], step.texts[1]);
  }
  if (step.act == Act::mayReset) {
    m_mayReset[step.texts[0]] = step.numbers[0] == 1;
    m_management->setUserData(step.texts[0], step.numbers[0] == 1);
  }
}

void SteppedTelephone::applyToDevice(const Step& step) {
  const auto& n = step.numbers;
  const bool on = !n.empty() && n[0] == 1;
  if (step.act == Act::outsideStore) m_store.put(step.texts[0], step.texts[1]);
  if (step.act == Act::storeRefuses) m_store.refuses = on;
  if (step.act == Act::storeSilent) m_store.silent = on;
  if (step.act == Act::launchFails) device().launchFails = on;
  if (step.act == Act::lookupsFail) device().lookupsFail = on;
  if (step.act == Act::logLevel) host::ApplicationLog::instance().setLevel(static_cast<int>(n[0]));
  if (step.act == Act::fallbackFile) std::ofstream(kFallbackFile) << step.texts[0];
  if (step.act == Act::service) setService(step.texts[0], on);
  if (step.act == Act::jack) m_physical->jack(static_cast<int>(n[0]), static_cast<int>(n[1]));
  if (step.act == Act::restart) restart(step);
  if (step.act == Act::idle) {
    m_service->run();
    m_service->shutdown();
    m_service->hookswitchEvent(PhysDefs::actionPressed);
  }
}

void SteppedTelephone::restart(const Step& step) {
  powerDown(step.numbers[0] == 1);
  m_clock = std::make_unique<host::VirtualClock>();
  static_cast<void>(m_clock->setWall(milliseconds(step.numbers[3])));
  host::setProcessClock(m_clock.get());
  startProcess(step.texts[0]);
  m_context = std::make_unique<host::HostContext>(*m_clock);
  m_management = std::make_unique<support::RecordingManagement>(m_journal, kQueries);
  for (const auto& [key, value] : m_values) m_management->setValue(key, value);
  for (const auto& [key, mayReset] : m_mayReset) m_management->setUserData(key, mayReset);
  m_physical = std::make_unique<support::RecordingPhysical>(
      m_journal, static_cast<int>(step.numbers[1]), kQueries);
  m_security = std::make_unique<support::RecordingSecurityLog>();
  m_security->onRecord = [this](const auto& record) { recordSecurity(record); };
  m_peers = std::make_unique<Peers>(m_journal);
  for (int row = 0; row < 4; ++row) setService(kServices[row], (step.numbers[2] >> row & 1) == 0);
  HeldPipe::makePipe();
  m_service = std::make_unique<ClockService>();
  static_cast<Executable&>(*m_service).init(*m_context);
  m_pipe.awaitListener();
}

void SteppedTelephone::setService(const std::string& name, bool present) {
  const std::map<std::string, Executable*> services{
      {kServices[physicalService], m_physical.get()},
      {kServices[managementService], m_management.get()},
      {kServices[securityService], m_security.get()},
      {kServices[storeService], &m_store}};
  if (present) {
    m_context->add(name, services.at(name));
  } else {
    m_context->remove(name);
  }
}

// Without local management, asks the service itself.
bool SteppedTelephone::set(const std::string& key, const std::string& value) {
  if (m_management->hasClock()) return m_management->set(key, value);
  ManageableData record;
  record.setRootId(key, nullptr);
  record.populate(key, value);
  try {
    return m_service->setData(record);
  } catch (const std::out_of_range&) {
    return false;
  }
}

std::string SteppedTelephone::get(const std::string& key) {
  std::string value;
  if (m_management->hasClock()) return m_management->get(key, value) ? value : "refused";
  ManageableData record;
  record.setRootId(key, nullptr);
  const bool known = m_service->getData(record);
  return known && record.interogate(key, value) ? value : "refused";
}

// The service's errors, and its lines for the system log.
void SteppedTelephone::recordLog(const host::LogEntry& entry) {
  if (entry.systemLog) return m_journal.add("system log " + entry.text);
  if (entry.level <= 2 && entry.component.rfind("ClockService", 0) == 0)
    m_journal.add("log 2 " + entry.component + ": " + entry.text);
}

void SteppedTelephone::recordSecurity(const support::RecordingSecurityLog::Record& record) {
  m_journal.add(print("security %lld %d %d %d %d %s ", static_cast<long long>(record.time),
                      record.facility, record.severity, record.eventClass, record.eventCode,
                      record.failure ? "failed" : "done") +
                record.text + " by \"" + record.subject + "\" from \"" + record.origin + "\"");
}

// Queries may log lines; only their answers are compared, so the lines are dropped.
Lines SteppedTelephone::snapshot() {
  int hours = 0, minutes = 0, seconds = 0, day = 0, month = 0, year = 0;
  m_service->getTime(hours, minutes, seconds);
  m_service->getDate(day, month, year);
  const auto wall = std::chrono::duration_cast<milliseconds>(m_clock->wall());
  Lines lines{"time " + m_service->getTime(),
              "date " + m_service->getDate(),
              "short date " + m_service->getDateShort(),
              print("reading %d:%d:%d", hours, minutes, seconds),
              print("day %d.%d.%d", day, month, year),
              "seconds since 1970 " + std::to_string(m_service->getTimeVal()),
              "local seconds " + std::to_string(m_service->getDisplayTimeVal()),
              m_service->isTimeSourceSntp() ? "from NTP yes" : "from NTP no",
              "wall " + std::to_string(wall.count()),
              "TZ " + zoneInForce(),
              "script " + script()};
  for (const char* const key : kManagementKeys) lines.push_back(std::string(key) + " " + get(key));
  static_cast<void>(m_journal.take());
  return lines;
}

}  // namespace simulation
