#include "ManagementReading.h"

#include "LocalMgmtIfc.h"
#include "ManageableData.h"

std::optional<std::string> readManagementValue(LocalMgmtIfc& localMgmt, const char* key) {
  ManageableData record;
  record.setRootId(key, nullptr);
  std::string value;
  if (!localMgmt.getData(record) || !record.interogate(key, value)) return std::nullopt;
  return value;
}
