#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Method.h"
#include "runtime/Device.h"
#include "verbs/Json.h"

namespace host {

class Controller;
class LogCollector;
class Plugin;
class ScenarioPeer;
class VirtualClock;

// The telephone of a scenario, with an observer on it: powered on when the first step needs it, in
// a folder of its own that goes with it. Owner: the runner. Thread: its caller's, as framework
// thread. Failure: host::Error, ScenarioFailure.
class ScenarioDevice {
 public:
  ScenarioDevice(Plugin& plugin, DeviceOptions options);
  ~ScenarioDevice();
  ScenarioDevice(const ScenarioDevice&) = delete;
  ScenarioDevice& operator=(const ScenarioDevice&) = delete;

  void powerOn();   // no effect when it is on
  void restart();   // orderly off and on; a second power-on finds the state of the first
  void powerCut();  // off and on; what the orderly end wrote is taken back, as if it had not come

  // A control request, answered. Powers on.
  [[nodiscard]] Json request(const Json& request);

  // A remote call of the observing peer; empty: no reply. Powers on.
  [[nodiscard]] std::optional<Method> call(Method& method);

  // What came since the device was first powered on and was not passed over yet, oldest first. A
  // match takes the one found and passes over those before it.
  [[nodiscard]] std::vector<Method> events();
  void passEvents(std::size_t count);
  [[nodiscard]] std::vector<std::string> reports();  // "KEY VALUE"
  void passReports(std::size_t count);
  [[nodiscard]] std::vector<std::string> logTexts();
  void passLogTexts(std::size_t count);

  [[nodiscard]] Device& device();  // powers on

  // The file on this machine: below the device root for a device path, else a storage file.
  [[nodiscard]] std::filesystem::path fileOf(const std::string& path) const;
  void writeFile(const std::string& devicePath, const std::string& text) const;

 private:
  struct Powered;

  void powerOff();

  Plugin& m_plugin;
  DeviceOptions m_options;
  std::filesystem::path m_folder;
  std::shared_ptr<LogCollector> m_log;
  std::unique_ptr<ScenarioPeer> m_peer;
  std::shared_ptr<std::vector<std::string>> m_reports;
  std::size_t m_reportsPassed = 0;
  std::unique_ptr<Powered> m_powered;
};

}  // namespace host
