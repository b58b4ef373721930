#include "runtime/Device.h"

#include <cstdlib>
#include <ctime>
#include <functional>
#include <utility>

#include "DataStorage.h"
#include "Invoker.h"
#include "Proxy.h"
#include "Service.h"
#include "base/Error.h"
#include "clock/VirtualClock.h"
#include "framework/DataAccess.h"
#include "framework/HostContext.h"
#include "framework/StateFolder.h"
#include "runtime/ListenerWaker.h"
#include "runtime/Plugin.h"
#include "runtime/RemoteSets.h"
#include "runtime/ReportPipe.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"
#include "services/PhysicalInterface.h"
#include "services/SecurityLog.h"
#include "services/SettingsDatabase.h"
#include "services/StateFolderLock.h"

namespace host {
namespace {

// A telephone starts without a zone, also the second one of this process: its service is to find
// no trace of the one before.
void startWithoutZone() {
  ::setenv("TZ", "UTC0", 1);
  ::tzset();
}

}  // namespace

// In order of construction: what comes later uses what comes before.
struct Device::Parts {
  Parts(VirtualClock& theClock, Plugin& thePlugin, const DeviceOptions& theOptions);

  void openStores();
  void recordThrownSets();
  void fillInValues();
  void presetFallbackTime();
  void registerServices();

  VirtualClock& clock;
  Plugin& plugin;
  const DeviceOptions options;
  std::optional<StateFolderLock> stateLock;
  std::unique_ptr<SettingsDatabase> ownStore;
  Executable* storeService = nullptr;  // the one in use, of whoever
  DataAccess* store = nullptr;         // the same
  std::unique_ptr<SecurityLog> securityLog;
  PhysicalInterface physical;
  LocalManagement management;
  ManagementThread managementThread;  // runs tasks of the above
  HostContext context;
  std::optional<ReportPipe> pipe;
  std::optional<ListenerWaker> waker;
  std::optional<RemoteSets> remote;  // as the invoker sees it
  std::unique_ptr<Invoker> invoker;
  std::unique_ptr<Service> service;
};

Device::Parts::Parts(VirtualClock& theClock, Plugin& thePlugin, const DeviceOptions& theOptions)
    : clock(theClock),
      plugin(thePlugin),
      options(theOptions),
      physical(theOptions.variant),
      management([this](std::function<void()> task) { managementThread.post(std::move(task)); }),
      context(theClock) {
  openStores();
  recordThrownSets();
  fillInValues();
  registerServices();
}

void Device::Parts::openStores() {
  const bool inFolder = options.store == nullptr || !options.securityLogInMemory;
  if (inFolder) stateLock.emplace(options.state);
  storeService = options.store;
  if (storeService == nullptr) {
    ownStore = std::make_unique<SettingsDatabase>(options.state);
    storeService = ownStore.get();
  }
  store = dynamic_cast<DataAccess*>(storeService);
  securityLog = options.securityLogInMemory ? std::make_unique<SecurityLog>()
                                            : std::make_unique<SecurityLog>(options.state);
}

// The service throws before it records the set.
void Device::Parts::recordThrownSets() {
  if (options.withoutSecurityLog) return;
  management.onThrownSet([this](const std::string& key, const std::string& value) {
    securityLog->note(SecurityLog::Event::managementSet, true,
                      "ClockSettings set data " + key + "(" + value + ")");
  });
}

void Device::Parts::fillInValues() {
  management.setValue("interface-status", options.networkUp ? "up" : "down");
  if (!options.softwareType.empty()) {
    management.setValue("related-software-type", options.softwareType);
  }
  if (!options.mac.empty()) management.setValue("mac-addr", options.mac);
}

void Device::Parts::presetFallbackTime() {
  if (!options.at) return;
  if (!store->setItem(DASUtilsStrings::ClockSettingsSchema, "FallbackDateTime", *options.at)) {
    throw Error("the time to start at cannot be saved in the store");
  }
}

void Device::Parts::registerServices() {
  if (!options.withoutDataAccess) context.add("DataAccessServiceIfc", storeService);
  if (!options.withoutLocalManagement) context.add("LocalMgmtIfc", &management);
  if (!options.withoutSecurityLog) context.add("SecurityLogServiceIfc", securityLog.get());
  if (!options.withoutPhysicalInterface) context.add("PhysicalInterfaceServiceIfc", &physical);
}

Device::Device(VirtualClock& clock, Plugin& plugin, const DeviceOptions& options)
    : m_parts(std::make_unique<Parts>(clock, plugin, options)) {}

Device::~Device() {
  stop();
}

void Device::start(FrameworkContext& remote) {
  Parts& parts = *m_parts;
  startWithoutZone();
  if (!parts.options.state.empty()) setStorageFolder(parts.options.state);
  parts.pipe.emplace();
  parts.waker.emplace(*parts.pipe);
  parts.presetFallbackTime();
  parts.invoker.reset(parts.plugin.createInvoker());
  parts.invoker->initInvoker(&parts.remote.emplace(remote, *parts.securityLog));
  // Refused now, and not when the first observer comes.
  const std::unique_ptr<Proxy> proxy(parts.plugin.createProxy());
  parts.service.reset(parts.plugin.createService());
  parts.context.add("ClockService", parts.service.get());
  parts.service->init(parts.context);
}

void Device::stop() {
  Parts& parts = *m_parts;
  if (parts.service) {
    parts.service->shutdown();
    parts.context.remove("ClockService");
    parts.managementThread.dropQueued();
    // On its own thread: no call into the service is under way then, and none will come.
    parts.managementThread.run([&parts] { parts.management.dropAgents(); });
    parts.physical.dropSubscribers();
    parts.waker->begin();
    parts.service.reset();
    parts.waker.reset();
  }
  parts.invoker.reset();
}

bool Device::running() const {
  return m_parts->service != nullptr;
}

Executable& Device::service() {
  return *m_parts->service;
}

Invoker& Device::invoker() {
  return *m_parts->invoker;
}

Proxy* Device::makeProxy() {
  Proxy* const proxy = m_parts->plugin.createProxy();
  proxy->init(m_parts->context);
  return proxy;
}

ReportPipe& Device::reportPipe() {
  return *m_parts->pipe;
}

VirtualClock& Device::clock() {
  return m_parts->clock;
}

LocalManagement& Device::management() {
  return m_parts->management;
}

ManagementThread& Device::managementThread() {
  return m_parts->managementThread;
}

PhysicalInterface& Device::physical() {
  return m_parts->physical;
}

SecurityLog& Device::securityLog() {
  return *m_parts->securityLog;
}

DataAccess& Device::store() {
  return *m_parts->store;
}

const DeviceOptions& Device::options() const {
  return m_parts->options;
}

}  // namespace host
