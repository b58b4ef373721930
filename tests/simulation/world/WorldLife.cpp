// The world's start, restart, and the questions asked of it.

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <exception>

#include "ClockService.h"
#include "ManageableData.h"
#include "clock/VirtualClock.h"
#include "runtime/HostContext.h"
#include "simulation/ManagementKeys.h"
#include "simulation/world/DeviceParts.h"
#include "simulation/world/World.h"

namespace simulation {
namespace {

std::string number(const char* label, std::int64_t value) {
  return std::string(label) + std::to_string(value);
}

std::string contentOf(const char* path) {
  std::array<char, 2048> buffer{};
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return "(no file)";
  const ssize_t length = read(file, buffer.data(), buffer.size());
  close(file);
  return {buffer.data(), static_cast<std::size_t>(length < 0 ? 0 : length)};
}

std::string zoneInForce() {
  const char* const zone = std::getenv("TZ");  // NOLINT(concurrency-mt-unsafe): nothing else runs
  return zone == nullptr ? "(none)" : zone;
}

// As in a process that has just started on a device.
void startProcess() {
  setenv("TZ", "", 1);  // NOLINT(concurrency-mt-unsafe): nothing else runs
  tzset();
  deviceParts().random.seed(1);
}

}  // namespace

World::World() : m_log(std::make_shared<RecordingLog>(m_journal)) {
  deviceParts().journal = &m_journal;
  deviceParts().launchFails = false;
  deviceParts().lookupsFail = false;
  deviceParts().beforeWaiting = [this] { m_listener.hangUp(); };
  host::LogBook::instance().setLevel(host::LogBook::kDefaultLevel);
  host::LogBook::instance().addSink(m_log);
}

World::~World() {
  powerDown(false);
  unlink("data/fallback_time.txt");
  host::LogBook::instance().removeSink(m_log);
  host::LogBook::instance().setLevel(host::LogBook::kDefaultLevel);
  deviceParts().beforeWaiting = nullptr;
}

void World::powerDown(bool inOrder) {
  m_journal.mute(!inOrder);
  m_store.powerless = !inOrder;
  if (m_service && inOrder) m_service->shutdown();
  m_service.reset();
  m_peers.reset();
  host::setProcessClock(nullptr);
  m_store.powerless = false;
  m_journal.mute(false);
}

void World::restart(const Step& step) {
  powerDown(step.numbers[0] == 1);
  m_context.reset();
  m_clock = std::make_unique<host::VirtualClock>();
  static_cast<void>(m_clock->setWall(std::chrono::milliseconds(step.numbers[3])));
  host::setProcessClock(m_clock.get());
  startProcess();
  build(static_cast<int>(step.numbers[1]), step.numbers[2]);
  m_listener.lay();
  m_service.reset(createClockService());
  m_service->init(*m_context);
  m_listener.meet();
}

void World::build(int variant, std::int64_t missing) {
  m_context = std::make_unique<host::HostContext>(*m_clock);
  m_management = std::make_unique<RecordingManagement>(m_journal);
  for (const auto& [key, value] : m_values) m_management->setValue(key, value);
  for (const auto& [key, mayReset] : m_mayReset) m_management->setUserData(key, mayReset);
  m_physical = std::make_unique<RecordingPhysical>(m_journal, variant);
  m_security = std::make_unique<RecordingSecurity>(m_journal);
  m_peers = std::make_unique<Peers>(m_journal);
  m_managed = (missing & Missing::management) == 0;
  setService(Services::physical, (missing & Missing::physical) == 0);
  setService(Services::management, m_managed);
  setService(Services::security, (missing & Missing::security) == 0);
  setService(Services::store, (missing & Missing::store) == 0);
}

void World::setService(const std::string& name, bool there) {
  const std::map<std::string, Executable*> services{{Services::physical, m_physical.get()},
                                                    {Services::management, m_management.get()},
                                                    {Services::security, m_security.get()},
                                                    {Services::store, &m_store}};
  if (there)
    m_context->add(name, services.at(name));
  else
    m_context->remove(name);
}

bool World::set(const std::string& key, const std::string& value) {
  if (m_managed) return m_management->set(key, value);
  ManageableData record;
  record.setRootId(key, nullptr);
  record.populate(key, value);
  try {
    return dynamic_cast<MgmtAgentIfc&>(*m_service).setData(record);
  } catch (const std::exception&) {
    return false;
  }
}

std::string World::get(const std::string& key) {
  std::string value;
  if (m_managed) return m_management->get(key, value) ? value : "refused";
  ManageableData record;
  record.setRootId(key, nullptr);
  const bool known = dynamic_cast<MgmtAgentIfc&>(*m_service).getData(record);
  return known && record.interogate(key, value) ? value : "refused";
}

bool World::reset() {
  return m_managed ? m_management->reset()
                   : dynamic_cast<MgmtAgentIfc&>(*m_service).resetUserData();
}

// The questions themselves may leave lines in the log; only the answers count here.
Lines World::snapshot() {
  m_journal.mute(true);
  ClockServiceIfc& clock = clockInterface();
  int hours = 0, minutes = 0, seconds = 0, day = 0, month = 0, year = 0;
  clock.getTime(hours, minutes, seconds);
  clock.getDate(day, month, year);
  const auto wall = std::chrono::duration_cast<std::chrono::milliseconds>(m_clock->wall());
  Lines lines{"time " + clock.getTime(),
              "date " + clock.getDate(),
              "short date " + clock.getDateShort(),
              number("hours ", hours),
              number("minutes ", minutes),
              number("seconds ", seconds),
              number("day ", day),
              number("month ", month),
              number("year ", year),
              number("seconds since 1970 ", clock.getTimeVal()),
              number("local seconds ", clock.getDisplayTimeVal()),
              "UTC " + clock.getUTCTime(0),
              clock.isTimeSourceSntp() ? "from NTP yes" : "from NTP no",
              number("wall ", wall.count()),
              "TZ " + zoneInForce(),
              "script " + contentOf("state/setupTZ.sh")};
  for (const char* const key : kManagementKeys) lines.push_back(std::string(key) + " " + get(key));
  m_journal.mute(false);
  return lines;
}

}  // namespace simulation
