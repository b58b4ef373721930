#include "ClockService/ManagementRecords.h"

#include <gtest/gtest.h>

#include <optional>

#include "ManageableData.h"
#include "services/LocalManagement.h"

namespace {

TEST(ManagementRecords, GivesTheDevicesValue) {
  host::LocalManagement management;
  management.setValue("mac-addr", "0001E3A1B2C3");
  EXPECT_EQ(readManagementValue(management, "mac-addr"), "0001E3A1B2C3");
}

TEST(ManagementRecords, EmptyValueIsAValue) {
  host::LocalManagement management;
  management.setValue("mac-addr", "");
  EXPECT_EQ(readManagementValue(management, "mac-addr"), "");
}

TEST(ManagementRecords, UnknownKeyIsNothing) {
  host::LocalManagement management;
  management.setValue("mac-addr", "0001E3A1B2C3");
  EXPECT_EQ(readManagementValue(management, "interface-status"), std::nullopt);
}

// Returns true and leaves the record empty.
class ForgetfulManagement : public host::LocalManagement {
 public:
  bool getData(ManageableData&) override { return true; }
};

TEST(ManagementRecords, RecordWithoutAValueIsNothing) {
  ForgetfulManagement management;
  EXPECT_EQ(readManagementValue(management, "mac-addr"), std::nullopt);
}

// Fills the record in and returns false.
class HesitantManagement : public host::LocalManagement {
 public:
  bool getData(ManageableData& record) override {
    record.populate("mac-addr", "0001E3A1B2C3");
    return false;
  }
};

TEST(ManagementRecords, RefusalIsNothingWhateverTheRecordHolds) {
  HesitantManagement management;
  EXPECT_EQ(readManagementValue(management, "mac-addr"), std::nullopt);
}

}  // namespace
