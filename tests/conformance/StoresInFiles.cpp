#include "conformance/StoresInFiles.h"

#include <cerrno>
#include <limits>
#include <optional>

#include "host/services/StoreFaults.h"
#include "services/SecurityLog.h"
#include "services/SettingsDatabase.h"

namespace host {
namespace {

class StoresInFiles final : public Stores {
 public:
  explicit StoresInFiles(const std::filesystem::path& folder)
      : m_settings(folder), m_securityLog(folder) {}

  Executable& settings() override { return m_settings; }
  void refuseSettings(bool refused) override {
    m_fullDisk.reset();
    if (refused) m_fullDisk.emplace(ENOSPC);
  }
  Executable& securityLog() override { return m_securityLog; }
  std::vector<conformance::SecurityRecord> securityRecords() override {
    std::vector<conformance::SecurityRecord> records;
    for (const SecurityRecord& row :
         m_securityLog.list(0, std::numeric_limits<std::size_t>::max())) {
      records.push_back({row.time, row.facility, row.severity, row.eventClass, row.eventCode,
                         row.failure, row.text, row.subject, row.origin});
    }
    return records;
  }

 private:
  SettingsDatabase m_settings;
  SecurityLog m_securityLog;
  std::optional<FailingWrites> m_fullDisk;
};

}  // namespace

std::unique_ptr<Stores> openStoresInFiles(const std::filesystem::path& folder) {
  return std::make_unique<StoresInFiles>(folder);
}

}  // namespace host
