#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Method.h"
#include "runtime/Device.h"
#include "scenario/Received.h"
#include "verbs/Json.h"

namespace host {

class Controller;
class TextCollector;
class Plugin;
class ScenarioPeer;
class VirtualClock;

// The telephone of a scenario, with an observer. The first step that needs it powers it on. Its
// files are in a temporary folder, which the destructor removes. Owner: the runner. Thread: its
// caller's, as framework thread. Failure: host::Error, ScenarioFailure.
class ScenarioDevice {
 public:
  ScenarioDevice(Plugin& plugin, DeviceOptions options);
  ~ScenarioDevice();
  ScenarioDevice(const ScenarioDevice&) = delete;
  ScenarioDevice& operator=(const ScenarioDevice&) = delete;

  void powerOn();   // no effect when it is on
  void restart();   // orderly off and on; a second power-on finds the state of the first
  void powerCut();  // off and on; files are as they were at the cut

  // The answer to a control request. Powers on.
  [[nodiscard]] Json request(const Json& request);

  // A remote call of the observing peer; empty: no reply. Powers on.
  [[nodiscard]] std::optional<Method> call(Method& method);

  // All events, reports and log lines of the service since the device was first powered on.
  [[nodiscard]] Received<Method>& events();
  [[nodiscard]] Received<std::string>& reports() { return *m_reports; }  // "KEY VALUE"
  [[nodiscard]] Received<std::string>& logTexts();

  // For a failure: the virtual time, "UTC, local ..."; empty while it is off.
  [[nodiscard]] std::optional<std::string> timeText() const;
  // The last ten events that came, skipped or not, each with its time; oldest first.
  [[nodiscard]] std::vector<std::string> lastEvents() const;

  [[nodiscard]] Device& device();  // powers on

  // The file on this machine: below the device root for a device path, else in the state folder.
  [[nodiscard]] std::filesystem::path fileOf(const std::string& path) const;
  void writeFile(const std::string& devicePath, const std::string& text) const;

 private:
  struct Powered;

  void powerOff();

  Plugin& m_plugin;
  DeviceOptions m_options;
  std::filesystem::path m_folder;
  std::shared_ptr<TextCollector> m_log;
  std::unique_ptr<ScenarioPeer> m_peer;
  std::shared_ptr<Received<std::string>> m_reports;
  std::unique_ptr<Powered> m_powered;
};

}  // namespace host
