// The host, with the faults that are switched on.
#include <algorithm>
#include <ctime>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "conformance/ConnectedPlatform.h"
#include "conformance/FaultyContext.h"
#include "conformance/FaultyRemote.h"
#include "conformance/Violation.h"
#include "framework/DataAccess.h"

namespace conformance {
namespace {

const Violation kStoredAtTheEnd("DataStoragePromise.IsDurable",
                                "the settings are stored when the device is switched off");
const Violation kForgetsTheTime("RestartAcceptance.TheTimeContinuesWhereItWasSaved",
                                "the saved time does not survive a restart");
const Violation kForgetsAKey("ManagementAcceptance.TheSettingsSurviveARestart",
                             "one of the settings does not survive a restart");
const Violation kOneWriter("RestartAcceptance.AnNtpReportIsAnnouncedAndSaved",
                           "what another thread stores does not survive a restart");
const Violation kMovingTimers("SystemClockPromise.DoesNotMoveTheTimers",
                              "setting the clock moves the timers");
const Violation kNoScript("ZonesAcceptance.AreInTheScriptForOtherPrograms",
                          "the plug-in's files are not kept");
const Violation kJackThread("PhysicalEventObserverPromise.HearsOfEventsOnTheFrameworkThread",
                            "events of jacks come on a thread of their own");
const Violation kHidesRefusals("LocalMgmtIfcPromise.PassesTheAgentsRefusalOn",
                               "the operator does not hear of an agent's refusal");
const Violation kNoFullDisk("DataStoragePromise.KeepsTheOldValueWhenItRefuses",
                            "the adapter lacks an operation", "Not checked: DataStorage.h: ");
const Violation kClippedValues("ManagementAcceptance.EachKeyIsSetAndRead",
                               "values from the operator are clipped");
const Violation kLogsAll("LoggingPromise.DropsEntriesAboveTheLevel",
                         "entries above the level are written");
const Violation kAgentStays("LocalMgmtIfcPromise.TheAgentIsGoneWhenItsServiceIsUnloaded",
                            "agents of an unloaded service are called");

// Keeps in memory what the faults do not store.
class FaultyStores final : public host::Stores, public Executable, public host::DataAccess {
 public:
  explicit FaultyStores(const std::filesystem::path& folder)
      : m_real(host::openStoresInFiles(folder)) {}
  ~FaultyStores() override {
    for (const auto& [item, value] : m_unstored)
      if (kStoredAtTheEnd.on()) static_cast<void>(stored().setItem(item.first, item.second, value));
  }

  Executable& settings() override { return *this; }
  void refuseSettings(bool refused) override { m_real->refuseSettings(refused); }
  Executable& securityLog() override { return m_real->securityLog(); }
  std::vector<SecurityRecord> securityRecords() override { return m_real->securityRecords(); }

  void init(Context& /*context*/) override {}
  void shutdown() override {}
  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override {
    if (!isLost(key)) return stored().setItem(schema, key, value);
    m_unstored[{schema, key}] = value;
    return true;
  }
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override {
    const auto found = m_unstored.find({schema, key});
    return found == m_unstored.end() ? stored().getItem(schema, key) : found->second;
  }

 private:
  host::DataAccess& stored() { return dynamic_cast<host::DataAccess&>(m_real->settings()); }
  bool isLost(const std::string& key) const {
    return kStoredAtTheEnd.on() || (kForgetsTheTime.on() && key == "FallbackDateTime") ||
           (kForgetsAKey.on() && key == "NTPsharedSecret") ||
           (kOneWriter.on() && std::this_thread::get_id() != m_creator);
  }

  const std::unique_ptr<host::Stores> m_real;
  const std::thread::id m_creator = std::this_thread::get_id();
  std::map<std::pair<std::string, std::string>, std::string> m_unstored;
};

std::unique_ptr<host::Stores> openFaultyStores(const std::filesystem::path& folder) {
  return std::make_unique<FaultyStores>(folder);
}

class FaultyPlatform final : public host::ConnectedPlatform {
 public:
  FaultyPlatform() : ConnectedPlatform(openFaultyStores) { makeContext(); }

  Context& context() override { return *m_context; }
  void passTime(std::chrono::milliseconds duration) override {
    const std::chrono::milliseconds jump = std::chrono::seconds{time(nullptr) - m_time};
    if (kMovingTimers.on()) duration = std::max(duration + jump, std::chrono::milliseconds{0});
    ConnectedPlatform::passTime(duration);
    m_time = time(nullptr);
    if (kNoScript.on()) std::filesystem::remove(storageFolder() / "setupTZ.sh");
  }
  void restart() override {
    m_context.reset();
    ConnectedPlatform::restart();
    makeContext();
  }
  void refuseSettings(bool refused) override {
    if (kNoFullDisk.on()) return Platform::refuseSettings(refused);
    ConnectedPlatform::refuseSettings(refused);
  }
  bool manage(const std::string& key, const std::string& value) override {
    return ConnectedPlatform::manage(key, kClippedValues.on() ? value.substr(0, 3) : value) ||
           kHidesRefusals.on();
  }
  void plugJack(int plug, int status) override {
    if (!kJackThread.on()) return ConnectedPlatform::plugJack(plug, status);
    std::thread([&] { ConnectedPlatform::plugJack(plug, status); }).join();
  }
  void setLogLevel(int level) override {
    ConnectedPlatform::setLogLevel(kLogsAll.on() ? 6 : level);
  }
  void dropService() override {
    if (!kAgentStays.on()) ConnectedPlatform::dropService();
  }
  FrameworkContext& remote() override { return m_remote; }
  void serve(Executable& service, Invoker& invoker, std::function<Proxy*()> makeProxy) override {
    m_calls.emplace(invoker, m_disconnecting);
    ConnectedPlatform::serve(service, *m_calls, std::move(makeProxy));
  }
  void disconnect(int client) override {
    m_disconnecting = true;
    ConnectedPlatform::disconnect(client);
    m_disconnecting = false;
  }

 private:
  void makeContext() { m_context.emplace(ConnectedPlatform::context()); }

  time_t m_time = time(nullptr);
  std::optional<FaultyContext> m_context;
  FaultyRemote m_remote{ConnectedPlatform::remote()};
  bool m_disconnecting = false;
  std::optional<FaultyCalls> m_calls;
};

}  // namespace

std::unique_ptr<Platform> makePlatform() {
  return std::make_unique<FaultyPlatform>();
}

}  // namespace conformance
