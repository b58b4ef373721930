#include "ManageableData.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string valueOf(const ManageableData& record, const std::string& key) {
  std::string value = "untouched";
  return record.interogate(key, value) ? value : "-" + value;
}

TEST(ManageableData, StartsEmpty) {
  const ManageableData record;
  EXPECT_EQ(record.getRootId(), "");
  EXPECT_EQ(valueOf(record, ""), "-untouched");
  EXPECT_EQ(valueOf(record, "key"), "-untouched");
}

TEST(ManageableData, ReturnsTheFirstRoot) {
  ManageableData record;
  record.addRootId("first", nullptr);
  record.addRootId("second", nullptr);
  EXPECT_EQ(record.getRootId(), "first");
  record.setRootId("only", nullptr);
  EXPECT_EQ(record.getRootId(), "only");
  record.addRootId("more", nullptr);
  EXPECT_EQ(record.getRootId(), "only");
}

TEST(ManageableData, KeepsAValueForEachKey) {
  ManageableData record;
  record.setRootId("a", nullptr);
  record.populate("a", "1");
  record.populate("b", "");
  record.populate("a", "2");
  EXPECT_EQ(valueOf(record, "a"), "2");
  EXPECT_EQ(valueOf(record, "b"), "");
  EXPECT_EQ(valueOf(record, "A"), "-untouched");
  EXPECT_EQ(record.getRootId(), "a");
}

TEST(ManageableData, GetsNoRootFromAValue) {
  ManageableData record;
  record.populate("a", "1");
  EXPECT_EQ(record.getRootId(), "");
}

TEST(ManageableData, GetsARootFromANamedValueIfItHasNone) {
  ManageableData record;
  record.populate("a", "Name", "1");
  EXPECT_EQ(record.getRootId(), "a");
  EXPECT_EQ(valueOf(record, "a"), "1");
  EXPECT_EQ(valueOf(record, "Name"), "-untouched");
  record.populate("b", "Other", "2");
  EXPECT_EQ(record.getRootId(), "a");
  EXPECT_EQ(valueOf(record, "b"), "2");
}

TEST(ManageableData, IsAValue) {
  ManageableData original;
  original.setRootId("a", nullptr);
  original.populate("a", "1");
  ManageableData copy(original);
  ManageableData assigned;
  assigned = original;
  copy.populate("a", "2");
  EXPECT_EQ(valueOf(original, "a"), "1");
  EXPECT_EQ(valueOf(copy, "a"), "2");
  EXPECT_EQ(valueOf(assigned, "a"), "1");
  EXPECT_EQ(assigned.getRootId(), "a");
}

}  // namespace
