#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

class Executable;
class FrameworkContext;
class Invoker;
class Proxy;

namespace host {

class LocalManagement;
class ManagementThread;
class PhysicalInterface;
class Plugin;
class ReportPipe;
class SecurityLog;
class VirtualClock;
struct DataAccess;

// What a telephone is made of. The defaults are those of a fresh one without a network.
struct DeviceOptions {
  std::filesystem::path state;  // settings.db, security.db, setupTZ.sh, lock; made when missing
  int variant = 0;              // hardware sub-variant
  std::string softwareType;     // "related-software-type"; empty: the device holds no such value
  std::string mac;              // "mac-addr", 12 hexadecimal digits; empty: no such value
  bool networkUp = false;       // "interface-status"
  // Becomes the saved fallback time before the service starts, which then starts there by itself.
  std::optional<std::string> at;  // a UTC string of 25 characters

  // For tests and simulation: a store of their own (an Executable that is a DataAccess, outliving
  // the device), a security log in memory, and services that are not there.
  Executable* store = nullptr;
  bool securityLogInMemory = false;
  bool withoutPhysicalInterface = false;
  bool withoutLocalManagement = false;
  bool withoutDataAccess = false;
  bool withoutSecurityLog = false;
};

// One telephone: the services of its framework, and the plug-in's service among them.
// Owner: the framework thread, which alone calls it. Clock and plug-in outlive it.
// Failure: the constructor and start() throw host::Error; the device is then to be destroyed.
class Device {
 public:
  Device(VirtualClock& clock, Plugin& plugin, const DeviceOptions& options);
  ~Device();  // stops
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // Creates and initialises service and invoker. At most once. `remote` outlives the device's run.
  void start(FrameworkContext& remote);

  // Orderly end: no more calls into the service, which is then deleted, its listener woken.
  // REQUIRES: proxies that the service still observes with outlive this. Idempotent.
  void stop();
  [[nodiscard]] bool running() const;

  // REQUIRES: running.
  [[nodiscard]] Executable& service();
  [[nodiscard]] Invoker& invoker();
  [[nodiscard]] ReportPipe& reportPipe();

  // A new proxy out of the third factory, owned by the caller.
  [[nodiscard]] Proxy* makeProxy();

  // The parts are there, for the operator, also when the service does not find them ("without...").
  [[nodiscard]] VirtualClock& clock();
  [[nodiscard]] LocalManagement& management();
  [[nodiscard]] ManagementThread& managementThread();
  [[nodiscard]] PhysicalInterface& physical();
  [[nodiscard]] SecurityLog& securityLog();
  [[nodiscard]] DataAccess& store();
  [[nodiscard]] const DeviceOptions& options() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> m_parts;
};

}  // namespace host
