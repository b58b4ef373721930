#include "control/ManagementKeys.h"

#include <gtest/gtest.h>

#include <set>

namespace host {
namespace {

TEST(ManagementKeyTable, HoldsSixteenKeysOfWhichTwoCannotBeSet) {
  const auto names = managementKeyNames();
  EXPECT_EQ(names.size(), 16U);
  EXPECT_EQ(std::set(names.begin(), names.end()).size(), 16U);
  std::set<std::string_view> fixed;
  for (const ManagementKey& row : managementKeys()) {
    if (!row.settable) fixed.insert(row.key);
  }
  EXPECT_EQ(fixed,
            (std::set<std::string_view>{"daylight-save-zone-list", "daylight-save-zone-text"}));
}

TEST(ManagementKeyTable, SaysOfEachSettableKeyWhatItTakes) {
  for (const ManagementKey& row : managementKeys()) {
    EXPECT_EQ(row.values.empty(), !row.settable) << row.key;
    EXPECT_EQ(row.example.empty(), !row.settable) << row.key;
    EXPECT_EQ(findManagementKey(row.key), &row) << row.key;
  }
  EXPECT_EQ(findManagementKey("Time"), nullptr);
}

}  // namespace
}  // namespace host
