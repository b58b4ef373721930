#include "support/Telephone.h"

#include <array>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <stdexcept>

#include "DataStorage.h"
#include "DevicePaths.h"
#include "framework/ProgramMap.h"
#include "framework/StateFolder.h"
#include "support/FileContent.h"

namespace support {
namespace {

constexpr const char* kForm = "%Y-%m-%dT%H:%M:%S";

}  // namespace

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
  tm fields{};
  const char* const end = strptime(utc.c_str(), kForm, &fields);
  if (end == nullptr || *end != '\0') throw std::invalid_argument(utc);
  jumpTo(timegm(&fields));
}

void Telephone::jumpTo(std::int64_t secondsSinceEpoch) {
  if (!clock.setWall(std::chrono::seconds{secondsSinceEpoch})) std::abort();
}

std::int64_t Telephone::wallSeconds() const {
  return std::chrono::duration_cast<std::chrono::seconds>(clock.wall()).count();
}

std::string Telephone::wallText() const {
  const auto seconds = static_cast<time_t>(wallSeconds());
  tm fields{};
  gmtime_r(&seconds, &fields);
  std::array<char, 24> text{};
  return {text.data(), std::strftime(text.data(), text.size(), kForm, &fields)};
}

std::string zoneScript() {
  return contentOf(host::storageFolder() + "/setupTZ.sh");
}

}  // namespace support
