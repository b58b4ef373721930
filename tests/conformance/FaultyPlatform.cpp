// The host, with the faults that are switched on.
#include <filesystem>
#include <optional>
#include <system_error>

#include "conformance/ConnectedPlatform.h"
#include "conformance/FaultyContext.h"
#include "conformance/FaultyRemote.h"
#include "conformance/Violation.h"

namespace conformance {
namespace {

const Violation kForgetful("DataStoragePromise.IsDurable", "the settings are in memory only");
const Violation kForgetsTheTime("RestartAcceptance.TheTimeContinuesWhereItWasSaved",
                                "the settings are gone after a restart");
const Violation kForgetsTheReport("RestartAcceptance.AnNtpReportIsAnnouncedAndSaved",
                                  "the settings are gone after a restart");
const Violation kClippedValues("ManagementAcceptance.EachKeyIsSetAndRead",
                               "values from the operator are clipped");
const Violation kLogsAll("LoggingPromise.DropsEntriesAboveTheLevel",
                         "entries above the level are written");
const Violation kAgentStays("LocalMgmtIfcPromise.TheAgentIsGoneWhenItsServiceIsUnloaded",
                            "agents of an unloaded service are called");

class FaultyPlatform final : public host::ConnectedPlatform {
 public:
  FaultyPlatform() { makeContext(); }

  Context& context() override { return *m_context; }
  void restart() override {
    m_context.reset();
    if (kForgetful.on() || kForgetsTheTime.on() || kForgetsTheReport.on()) {
      for (const char* const key : {"settings.db", "settings.db-wal", "settings.db-shm"}) {
        std::error_code ignored;
        std::filesystem::remove(storageFolder() / key, ignored);
      }
    }
    ConnectedPlatform::restart();
    makeContext();
  }
  bool manage(const std::string& key, const std::string& value) override {
    return ConnectedPlatform::manage(key, kClippedValues.on() ? value.substr(0, 3) : value);
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
