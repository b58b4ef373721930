#include "scenario/ScenarioDevice.h"

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "base/Error.h"
#include "base/LogLevels.h"
#include "clock/VirtualClock.h"
#include "framework/ApplicationLog.h"
#include "framework/ProgramMap.h"
#include "interpose/DeviceRoot.h"
#include "operator/Controller.h"
#include "operator/LocalCall.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioPeer.h"
#include "services/LocalManagement.h"
#include "verbs/TimeText.h"

namespace host {
namespace fs = std::filesystem;
namespace {

constexpr int kLogLevel = kLogInfo;  // what `expect log` can see: all but the frequent traces

fs::path newFolder() {
  std::error_code error;
  const fs::path all = fs::temp_directory_path(error);
  if (error) throw Error("there is no temporary folder; set TMPDIR to one");
  std::string name = all / "clock-scenario-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw Error("cannot create a folder like " + name);
  return name;
}

}  // namespace

// The log as texts.
class TextCollector : public LogSink {
 public:
  void write(const LogEntry& entry) override { texts.add(entry.text); }

  Received<std::string> texts;
};

// From power-on to power-off. A telephone has no battery behind its clock: each start is in 1970.
struct ScenarioDevice::Powered {
  Powered(Plugin& plugin, const DeviceOptions& options) : device(clock, plugin, options) {}

  VirtualClock clock;
  ProcessClock processClock{clock};
  Device device;
  Controller controller{device, {}};
};

ScenarioDevice::ScenarioDevice(Plugin& plugin, DeviceOptions options)
    : m_plugin(plugin),
      m_options(std::move(options)),
      m_folder(newFolder()),
      m_log(std::make_shared<TextCollector>()),
      m_peer(std::make_unique<ScenarioPeer>()),
      m_reports(std::make_shared<Received<std::string>>()) {
  m_options.state = m_folder / "state";
  fs::create_directories(m_folder / "root");
  setDeviceRoot((m_folder / "root").string());
  // A scenario has no time server.
  ProgramMap::instance().set("/sbin/ntpclient", "/bin/true");
  ApplicationLog::instance().setLevel(kLogLevel);
  ApplicationLog::instance().addSink(m_log);
}

ScenarioDevice::~ScenarioDevice() {
  powerOff();
  ApplicationLog::instance().removeSink(m_log);
  ApplicationLog::instance().setLevel(ApplicationLog::kDefaultLevel);
  setDeviceRoot("");
  std::error_code error;  // a folder that cannot be removed is not a failure
  fs::remove_all(m_folder, error);
}

void ScenarioDevice::powerOn() {
  if (m_powered) return;
  m_powered = std::make_unique<Powered>(m_plugin, m_options);
  m_options.at.reset();  // later starts use the saved time
  Device& device = m_powered->device;
  m_peer->setProxySource([&device] { return device.makeProxy(); });
  device.management().onReport([reports = m_reports](const auto& key, const auto& value) {
    reports->add(key + ' ' + value);
  });
  device.start(*m_peer);
  Method observe("observeTimeEvents", Method::call);
  if (!callService(device, observe, ScenarioPeer::kAddress)) {
    throw Error("the service refused the observer");
  }
}

void ScenarioDevice::powerOff() {
  if (!m_powered) return;
  if (m_powered->device.running()) {
    Method unobserve("unobserveTimeEvents", Method::call);
    static_cast<void>(callService(m_powered->device, unobserve, ScenarioPeer::kAddress));
    m_powered->device.stop();
  }
  m_peer->dropProxy();
  m_powered.reset();
}

void ScenarioDevice::restart() {
  powerOn();
  powerOff();
  powerOn();
}

void ScenarioDevice::powerCut() {
  powerOn();
  const fs::path kept = m_folder / "at-the-cut";
  fs::remove_all(kept);
  fs::copy(m_options.state, kept, fs::copy_options::recursive);
  powerOff();
  fs::remove_all(m_options.state);
  fs::rename(kept, m_options.state);
  powerOn();
}

Json ScenarioDevice::request(const Json& request) {
  powerOn();
  return m_powered->controller.perform(request);
}

std::optional<Method> ScenarioDevice::call(Method& method) {
  powerOn();
  return callService(m_powered->device, method, ScenarioPeer::kAddress);
}

Received<Method>& ScenarioDevice::events() {
  return m_peer->events();
}

Received<std::string>& ScenarioDevice::logTexts() {
  return m_log->texts;
}

std::optional<std::string> ScenarioDevice::timeText() const {
  if (!m_powered) return std::nullopt;
  const auto now = std::chrono::duration_cast<std::chrono::seconds>(m_powered->clock.wall());
  return instantText(now) + ", local " + localText(now.count());
}

std::vector<std::string> ScenarioDevice::lastEvents() const {
  return m_peer->lastEvents();
}

Device& ScenarioDevice::device() {
  powerOn();
  return m_powered->device;
}

fs::path ScenarioDevice::fileOf(const std::string& path) const {
  return path.starts_with('/') ? fs::path(hostPath(path)) : m_options.state / path;
}

void ScenarioDevice::writeFile(const std::string& devicePath, const std::string& text) const {
  const fs::path file = fileOf(devicePath);
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  if (!stream.flush()) throw Error("the file " + devicePath + " cannot be written");
}

}  // namespace host
