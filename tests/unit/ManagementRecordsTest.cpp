#include "ClockService/ManagementRecords.h"

#include <gtest/gtest.h>

#include <optional>

#include "ManageableData.h"
#include "services/LocalManagement.h"

namespace {

TEST(ManagementRecords, ValueIsThatOfTheDeviceAndMayBeEmpty) {
  host::LocalManagement management;
  for (const char* const value : {"0001E3A1B2C3", ""}) {
    management.setValue("mac-addr", value);
    EXPECT_EQ(readManagementValue(management, "mac-addr"), value);
  }
  EXPECT_EQ(readManagementValue(management, "interface-status"), std::nullopt);
}

// Local management whose result does not match the record.
class InconsistentManagement : public host::LocalManagement {
 public:
  explicit InconsistentManagement(bool succeeds) : m_succeeds(succeeds) {}
  bool getData(ManageableData& record) override {
    if (!m_succeeds) record.populate("mac-addr", "0001E3A1B2C3");
    return m_succeeds;
  }

 private:
  const bool m_succeeds;
};

TEST(ManagementRecords, ValueNeedsBothSuccessAndAFilledRecord) {
  for (const bool succeeds : {true, false}) {
    InconsistentManagement management(succeeds);
    EXPECT_EQ(readManagementValue(management, "mac-addr"), std::nullopt) << succeeds;
  }
}

}  // namespace
