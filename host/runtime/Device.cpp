#include "runtime/Device.h"

#include <cstdlib>
#include <ctime>
#include <functional>
#include <iostream>
#include <utility>

#include "DataStorage.h"
#include "Proxy.h"
#include "base/Error.h"
#include "base/PrintableText.h"
#include "clock/VirtualClock.h"
#include "framework/DataAccess.h"
#include "framework/StateFolder.h"
#include "runtime/ChangeRecorder.h"
#include "runtime/ListenerWaker.h"
#include "runtime/Plugin.h"
#include "runtime/RemoteSetRecorder.h"
#include "runtime/ReportPipe.h"
#include "services/History.h"
#include "services/SecurityLog.h"
#include "services/SettingsDatabase.h"
#include "services/StateFolderLock.h"

namespace host {
namespace {

// The service must not find the zone that an earlier device of this process has set.
void resetZone() {
  ::setenv("TZ", "UTC0", 1);
  ::tzset();
}

// The management thread wakes the service's listener. Without it the service cannot be deleted, so
// the process ends as if it was killed.
void startOrExit(ManagementThread& thread) {
  try {
    thread.start();
  } catch (const Error& error) {
    std::cerr << errorLine("clockhost", error.what());
    std::_Exit(EXIT_FAILURE);
  }
}

}  // namespace

Device::Device(VirtualClock& clock, Plugin& plugin, const DeviceOptions& options)
    : m_clock(clock),
      m_plugin(plugin),
      m_options(options),
      m_physical(options.variant),
      m_management(
          [this](std::function<void()> task) { m_managementThread.post(std::move(task)); }),
      m_context(clock) {
  openStores();
  recordThrownSets();
  setDeviceValues();
  registerServices();
}

Device::~Device() {
  stop();
}

void Device::openStores() {
  const bool usesFolder = m_options.store == nullptr || !m_options.securityLogInMemory;
  if (usesFolder) m_stateLock = std::make_unique<StateFolderLock>(m_options.state);
  m_store = dynamic_cast<DataAccess*>(m_options.store);
  if (m_store == nullptr) {
    m_database = std::make_unique<SettingsDatabase>(m_options.state);
    m_store = m_database.get();
  }
  m_securityLog = m_options.securityLogInMemory ? std::make_unique<SecurityLog>()
                                                : std::make_unique<SecurityLog>(m_options.state);
  m_history = m_options.securityLogInMemory ? std::make_unique<History>()
                                            : std::make_unique<History>(m_options.state);
  m_changes = std::make_unique<ChangeRecorder>(m_clock, *m_store, *m_history);
}

// When the service throws, it has not recorded the set yet.
void Device::recordThrownSets() {
  m_management.onThrownSet([this](const std::string& key, const std::string& value) {
    m_securityLog->note(SecurityLog::Event::managementSet, true,
                        "ClockSettings set data " + key + "(" + value + ")");
  });
}

void Device::setDeviceValues() {
  m_management.setValue("interface-status", m_options.networkUp ? "up" : "down");
  if (!m_options.softwareType.empty()) {
    m_management.setValue("related-software-type", m_options.softwareType);
  }
  if (!m_options.mac.empty()) m_management.setValue("mac-addr", m_options.mac);
}

void Device::registerServices() {
  m_context.add("DataAccessServiceIfc", m_changes.get());
  m_context.add("LocalMgmtIfc", &m_management);
  m_context.add("SecurityLogServiceIfc", m_securityLog.get());
  m_context.add("PhysicalInterfaceServiceIfc", &m_physical);
}

void Device::start(FrameworkContext& remote) {
  resetZone();
  if (!m_options.state.empty()) setStorageFolder(m_options.state);
  m_pipe = std::make_unique<ReportPipe>();
  presetSavedTime();
  m_remote = std::make_unique<RemoteSetRecorder>(remote, *m_securityLog);
  m_invoker = m_remote->recorded(std::unique_ptr<Invoker>(m_plugin.createInvoker()));
  // A factory that returns null is refused now, and not when the first observer registers.
  const std::unique_ptr<Proxy> proxy(m_plugin.createProxy());
  m_service.reset(m_plugin.createService());
  m_context.add("ClockService", m_service.get());
  m_service->init(m_context);
}

void Device::presetSavedTime() {
  if (!m_options.at) return;
  if (!m_store->setItem(DASUtilsStrings::ClockSettingsSchema, "FallbackDateTime", *m_options.at)) {
    throw Error("the time to start at cannot be saved in the store");
  }
}

void Device::stop() {
  if (m_service) {
    startOrExit(m_managementThread);
    m_service->shutdown();
    m_context.remove("ClockService");
    m_managementThread.dropQueued();
    // On the management thread, so that no call into the service is in progress afterwards.
    m_managementThread.run([this] { m_management.dropAgents(); });
    m_physical.dropSubscribers();
    // The service's destructor waits for its listener.
    const ListenerWaker waker(m_pipe->heldPath(), m_managementThread);
    m_service.reset();
  }
  m_invoker.reset();
}

Proxy* Device::makeProxy() {
  Proxy* const proxy = m_plugin.createProxy();
  proxy->init(m_context);
  return proxy;
}

}  // namespace host
