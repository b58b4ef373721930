#include "conformance/HostPlatform.h"

#include <functional>

#include "framework/ApplicationLog.h"
#include "framework/ProgramMap.h"
#include "framework/StateFolder.h"
#include "interpose/DeviceRoot.h"

namespace host {

HostPlatform::SwitchedOn::SwitchedOn(std::unique_ptr<Stores> opened)
    : stores(std::move(opened)),
      physical(3),
      management([this](std::function<void()> task) { managementThread.post(std::move(task)); }) {
  context.add("DataAccessServiceIfc", &stores->settings());
  context.add("LocalMgmtIfc", &management);
  context.add("SecurityLogServiceIfc", &stores->securityLog());
  context.add("PhysicalInterfaceServiceIfc", &physical);
}

HostPlatform::HostPlatform(OpenStores openStores) : m_openStores(openStores) {
  ProgramMap::instance().set("/bin/sh", "/bin/sh");
  std::filesystem::create_directory(storageFolder());
  setStorageFolder(storageFolder());
  setDeviceRoot(m_folder / "root");
  switchOn();
}

HostPlatform::~HostPlatform() {
  m_on.reset();
  setDeviceRoot("");
  setStorageFolder("");
  ProgramMap::instance().clear();
}

void HostPlatform::switchOn() {
  m_on = std::make_unique<SwitchedOn>(m_openStores(storageFolder()));
  m_on->management.onReport([this](const std::string& key, const std::string& value) {
    m_reports.emplace_back(key, value);
  });
}

void HostPlatform::restart() {
  const std::filesystem::path stored = m_folder / "stored";
  std::filesystem::copy(storageFolder(), stored, std::filesystem::copy_options::recursive);
  m_on.reset();
  std::filesystem::remove_all(storageFolder());
  std::filesystem::rename(stored, storageFolder());
  switchOn();
}

void HostPlatform::settle() {
  m_on->managementThread.run([] {});
}

std::filesystem::path HostPlatform::deviceFile(const std::string& path) {
  return hostPath(path);
}

std::filesystem::path HostPlatform::plugin() {
  return CLOCK_PLUGIN;
}

void HostPlatform::setDeviceValue(const std::string& key, const std::string& value) {
  m_on->management.setValue(key, value);
}

std::optional<std::string> HostPlatform::deviceValue(const std::string& key) {
  return m_on->management.value(key);
}

std::optional<std::string> HostPlatform::managed(const std::string& key) {
  std::string value;
  bool found = false;
  m_on->managementThread.run([&] { found = m_on->management.get(key, value); });
  return found ? std::optional(value) : std::nullopt;
}

bool HostPlatform::manage(const std::string& key, const std::string& value) {
  bool accepted = false;
  m_on->managementThread.run([&] { accepted = m_on->management.set(key, value); });
  return accepted;
}

bool HostPlatform::resetUserData() {
  bool done = false;
  m_on->managementThread.run([&] { done = m_on->management.reset(); });
  return done;
}

int HostPlatform::itemState(const std::string& key) {
  return m_on->management.itemState(key);
}

void HostPlatform::setUserData(const std::string& key, bool isUserData) {
  m_on->management.setUserData(key, isUserData);
}

std::vector<conformance::SecurityRecord> HostPlatform::securityRecords() {
  return m_on->stores->securityRecords();
}

void HostPlatform::setLogLevel(int level) {
  ApplicationLog::instance().setLevel(level);
}

std::vector<conformance::LogEntry> HostPlatform::logEntries() {
  std::vector<conformance::LogEntry> entries;
  for (const LogEntry& entry : m_log.entries()) {
    if (entry.systemLog) continue;
    entries.push_back({entry.component, entry.level, entry.file, entry.line, entry.text});
  }
  return entries;
}

std::vector<std::string> HostPlatform::systemLogTexts() {
  std::vector<std::string> texts;
  for (const LogEntry& entry : m_log.entries())
    if (entry.systemLog) texts.push_back(entry.text);
  return texts;
}

void HostPlatform::dropService() {
  m_on->managementThread.dropQueued();
  m_on->managementThread.run([this] { m_on->management.dropAgents(); });
  m_on->physical.dropSubscribers();
}

}  // namespace host
