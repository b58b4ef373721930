#include "ManagementRecords.h"

#include "ClientUtils.h"
#include "LocalMgmtIfc.h"
#include "ManageableData.h"
#include "ManagementKeyNames.h"
#include "SntpServer.h"

std::optional<std::string> readManagementValue(LocalMgmtIfc& localMgmt, const char* key) {
  ManageableData record;
  record.setRootId(key, nullptr);
  std::string value;
  if (!localMgmt.getData(record) || !record.interogate(key, value)) return std::nullopt;
  return value;
}

void reportNumber(LocalMgmtIfc* localMgmt, const char* key, int number) {
  if (localMgmt == nullptr) return;
  ManageableData record;
  record.setRootId(key, nullptr);
  record.populate(key, ClientUtils::itos(number));
  localMgmt->reportDataChanged(record);
}

void showWhoSetsTime(LocalMgmtIfc* localMgmt, const std::string& server) {
  constexpr int kSettable = 0;
  constexpr int kSetByDevice = 4;
  if (localMgmt == nullptr) return;
  ManageableData record;
  record.addRootId(ManagementKeyNames::kTime, nullptr);
  localMgmt->setItemState(record, isConfiguredServer(server) ? kSetByDevice : kSettable);
}
