#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Invoker.h"
#include "Service.h"
#include "framework/HostContext.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"
#include "services/PhysicalInterface.h"

class FrameworkContext;
class Proxy;

namespace host {

class ChangeRecorder;
class History;
class Plugin;
class RemoteSetRecorder;
class ReportPipe;
class SecurityLog;
class SettingsDatabase;
class StateFolderLock;
class VirtualClock;
struct DataAccess;

// Configuration of a telephone. The defaults are those of a new one without a network.
struct DeviceOptions {
  std::filesystem::path state;  // state folder, created when missing
  int variant = 0;              // hardware sub-variant
  std::string softwareType;     // "related-software-type"; empty: the device has no such value
  std::string mac;              // "mac-addr", 12 hexadecimal digits; empty: no such value
  bool networkUp = false;       // "interface-status"
  // A UTC string of 25 characters, stored as the saved time before the service starts.
  std::optional<std::string> at;

  // For tests and simulation. The store is a DataAccess too, and outlives the device.
  Executable* store = nullptr;  // replaces the settings database
  bool securityLogInMemory = false;
};

// One telephone: the framework's services, and the plug-in's service among them. The constructor
// locks the state folder and opens the stores; start() starts the service; stop() ends it.
// Owner and thread: the framework thread. Clock and plug-in outlive it. Failure: the constructor
// and start() throw host::Error; the device must then be destroyed.
class Device {
 public:
  Device(VirtualClock& clock, Plugin& plugin, const DeviceOptions& options);
  ~Device();  // stops
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // Creates and initialises service and invoker. At most once. `remote` outlives the service.
  void start(FrameworkContext& remote);

  // Orderly shutdown: ends all calls into the service, wakes its listener, and deletes the service.
  // REQUIRES: proxies that the service still observes with outlive this. Idempotent. Failure: when
  // the system cannot start the management thread, the process ends with one line and status 1.
  void stop();
  [[nodiscard]] bool running() const { return m_service != nullptr; }

  // REQUIRES: running.
  [[nodiscard]] Executable& service() { return *m_service; }
  [[nodiscard]] Invoker& invoker() { return *m_invoker; }
  [[nodiscard]] ReportPipe& reportPipe() { return *m_pipe; }

  // A new, initialised proxy from the plug-in's factory; owned by the caller.
  [[nodiscard]] Proxy* makeProxy();

  // For the operator.
  [[nodiscard]] VirtualClock& clock() { return m_clock; }
  [[nodiscard]] LocalManagement& management() { return m_management; }
  [[nodiscard]] ManagementThread& managementThread() { return m_managementThread; }
  [[nodiscard]] PhysicalInterface& physical() { return m_physical; }
  [[nodiscard]] SecurityLog& securityLog() { return *m_securityLog; }
  [[nodiscard]] DataAccess& store() { return *m_store; }
  [[nodiscard]] std::vector<NamedTimer> timers() const { return m_context.armedTimers(); }
  [[nodiscard]] History& history() { return *m_history; }
  [[nodiscard]] ChangeRecorder& changes() { return *m_changes; }
  [[nodiscard]] const DeviceOptions& options() const { return m_options; }

 private:
  void openStores();
  void recordThrownSets();
  void setDeviceValues();
  void registerServices();
  void presetSavedTime();

  VirtualClock& m_clock;
  Plugin& m_plugin;
  const DeviceOptions m_options;
  // In order of construction: later ones use earlier ones.
  std::unique_ptr<StateFolderLock> m_stateLock;
  std::unique_ptr<SettingsDatabase> m_database;
  DataAccess* m_store = nullptr;  // the database, or the store of the options
  std::unique_ptr<SecurityLog> m_securityLog;
  std::unique_ptr<History> m_history;
  std::unique_ptr<ChangeRecorder> m_changes;
  PhysicalInterface m_physical;
  LocalManagement m_management;
  ManagementThread m_managementThread;
  HostContext m_context;
  std::unique_ptr<ReportPipe> m_pipe;
  std::unique_ptr<RemoteSetRecorder> m_remote;
  std::unique_ptr<Invoker> m_invoker;
  std::unique_ptr<Service> m_service;
};

}  // namespace host
