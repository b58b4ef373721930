#include "plugin/Telephone.h"

#include <cstdlib>
#include <filesystem>

#include "DataStorage.h"
#include "DevicePaths.h"
#include "framework/ProgramMap.h"
#include "framework/StateFolder.h"
#include "plugin/IndependentZones.h"
#include "support/FileContent.h"

namespace plugin {

Telephone::Telephone(int variant) : physical(variant) {
  std::filesystem::remove_all(DevicePaths::kFallbackTimeFile);
  host::ProgramMap::instance().clear();
  host::setProcessClock(&clock);
  context.add("LocalMgmtIfc", &management);
  context.add("PhysicalInterfaceServiceIfc", &physical);
  context.add("DataAccessServiceIfc", &settings);
  context.add("SecurityLogServiceIfc", &security);
}

Telephone::~Telephone() {
  switchOff();
  host::setProcessClock(nullptr);
  host::ProgramMap::instance().clear();
}

void Telephone::store(const std::string& key, const std::string& value) {
  if (!settings.setItem(DASUtilsStrings::ClockSettingsSchema, key, value)) std::abort();
}

void Telephone::storeZone(const std::string& offset, bool daylight, bool automatic, int zone) {
  store("TimezoneOffset", offset);
  store("DaylightSavingActive", daylight ? "true" : "false");
  store("AutoDaylightSavingEnabledDevice", automatic ? "true" : "false");
  store("DaylightSavingZoneIDDevice", std::to_string(zone));
}

void Telephone::switchOn() {
  pipe.renew();
  m_service = std::make_unique<ClockService>();
  m_service->observeTimeEvents(&observer);
  static_cast<Executable&>(*m_service).init(context);
}

void Telephone::switchOff() {
  if (m_service == nullptr) return;
  management.dropAgents();
  physical.dropSubscribers();
  pipe.release();
  m_service.reset();
}

std::string Telephone::stored(const std::string& key) {
  return settings.getItem(DASUtilsStrings::ClockSettingsSchema, key).value_or("(none)");
}

std::string Telephone::managed(const std::string& key) {
  std::string value;
  return management.get(key, value) ? value : "(refused)";
}

bool Telephone::manage(const std::string& key, const std::string& value) {
  return management.set(key, value);
}

void Telephone::changeZone(const std::string& key, const std::string& value) {
  if (manage(key, value)) pass(std::chrono::milliseconds{1});
}

void Telephone::jump(const std::string& utc) {
  jumpTo(independent::secondsOf(utc));
}

void Telephone::jumpTo(std::int64_t secondsSinceEpoch) {
  if (!clock.setWall(std::chrono::seconds{secondsSinceEpoch})) std::abort();
}

std::int64_t Telephone::wallSeconds() const {
  return std::chrono::duration_cast<std::chrono::seconds>(clock.wall()).count();
}

std::string Telephone::wallText() const {
  return independent::utcOf(wallSeconds());
}

std::string zoneScript() {
  return support::contentOf(host::storageFolder() + "/setupTZ.sh");
}

}  // namespace plugin
