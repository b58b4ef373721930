#pragma once

#include <memory>
#include <optional>

#include "Platform.h"
#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "runtime/ReportPipe.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"
#include "services/PhysicalInterface.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

// The adapter of the host's framework: its parts as a Device wires them, without a service.
namespace host {

// The stores of a device, in a folder.
struct Stores {
  virtual ~Stores() = default;
  virtual Executable& settings() = 0;
  virtual void refuseSettings(bool refused) = 0;
  virtual Executable& securityLog() = 0;
  virtual std::vector<conformance::SecurityRecord> securityRecords() = 0;
};
using OpenStores = std::unique_ptr<Stores> (*)(const std::filesystem::path& folder);

class HostPlatform : public conformance::Platform {
 public:
  explicit HostPlatform(OpenStores openStores);
  ~HostPlatform() override;

  Context& context() override { return m_on->context; }
  void passTime(std::chrono::milliseconds duration) override { m_on->clock.advance(duration); }
  void settle() override;
  void restart() override;
  std::filesystem::path storageFolder() override { return m_folder / "state"; }
  std::filesystem::path deviceFile(const std::string& path) override;
  std::filesystem::path plugin() override;
  void refuseSettings(bool refused) override { m_on->stores->refuseSettings(refused); }
  void setDeviceValue(const std::string& key, const std::string& value) override;
  std::optional<std::string> deviceValue(const std::string& key) override;
  std::optional<std::string> managed(const std::string& key) override;
  bool manage(const std::string& key, const std::string& value) override;
  bool resetUserData() override;
  int itemState(const std::string& key) override;
  void setUserData(const std::string& key, bool isUserData) override;
  std::vector<std::pair<std::string, std::string>> reports() override { return m_reports; }
  void plugJack(int plug, int status) override { m_on->physical.jack(plug, status); }
  std::vector<conformance::SecurityRecord> securityRecords() override;
  void setLogLevel(int level) override;
  std::vector<conformance::LogEntry> logEntries() override;
  std::vector<std::string> systemLogTexts() override;
  void dropService() override;

 private:
  // What a device has while it is on.
  struct SwitchedOn {
    explicit SwitchedOn(std::unique_ptr<Stores> opened);

    VirtualClock clock;
    const ProcessClock processClock{clock};
    const std::unique_ptr<Stores> stores;
    PhysicalInterface physical;
    LocalManagement management;
    ManagementThread managementThread;
    HostContext context{clock};
    ReportPipe pipe;
  };

  void switchOn();

  const OpenStores m_openStores;
  const support::TemporaryFolder m_folder{support::folderInMemory()};
  support::LogCapture m_log{0};
  std::vector<std::pair<std::string, std::string>> m_reports;
  std::unique_ptr<SwitchedOn> m_on;
};

}  // namespace host
