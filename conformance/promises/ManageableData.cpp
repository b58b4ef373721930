#include "ManageableData.h"

#include <string>

#include "Promise.h"

namespace {

std::string valueIn(const ManageableData& record, const std::string& key) {
  std::string value = "untouched";
  return record.interogate(key, value) ? value : "-" + value;
}

class ManageableDataPromise : public conformance::Promise {};

TEST_F(ManageableDataPromise, StartsEmpty) {
  promises("The first root, or empty text when there is none.");
  const ManageableData record;
  EXPECT_EQ(record.getRootId(), "");
}

TEST_F(ManageableDataPromise, HasItsRootsInOrder) {
  promises("Appends a root.");
  ManageableData record;
  record.addRootId("first", nullptr);
  record.addRootId("second", nullptr);
  EXPECT_EQ(record.getRootId(), "first");
}

TEST_F(ManageableDataPromise, CanHaveOneRootOnly) {
  promises("Makes `key` the only root.");
  ManageableData record;
  record.addRootId("first", nullptr);
  record.setRootId("only", nullptr);
  EXPECT_EQ(record.getRootId(), "only");
  record.addRootId("more", nullptr);
  EXPECT_EQ(record.getRootId(), "only");
}

TEST_F(ManageableDataPromise, KeepsAValueForEachKey) {
  promises("Stores the value of `key`, replacing an earlier one.");
  ManageableData record;
  record.populate("a", "1");
  record.populate("b", "");
  record.populate("a", "2");
  EXPECT_EQ(valueIn(record, "a"), "2");
  EXPECT_EQ(valueIn(record, "b"), "");
}

TEST_F(ManageableDataPromise, LeavesTheValueUntouchedWithoutOne) {
  promises("False, and `value` untouched, when there is none.");
  ManageableData record;
  EXPECT_EQ(valueIn(record, "a"), "-untouched");
  record.populate("a", "1");
  EXPECT_EQ(valueIn(record, "A"), "-untouched");
  EXPECT_EQ(valueIn(record, ""), "-untouched");
}

TEST_F(ManageableDataPromise, GetsNoRootFromAValue) {
  promises("Roots stay as they are.");
  ManageableData record;
  record.populate("a", "1");
  EXPECT_EQ(record.getRootId(), "");
}

TEST_F(ManageableDataPromise, GetsARootFromANamedValueIfItHasNone) {
  promises("`identifier` becomes the root if there is none.");
  ManageableData record;
  record.populate("a", "Name", "1");
  EXPECT_EQ(record.getRootId(), "a");
  EXPECT_EQ(valueIn(record, "a"), "1");
  EXPECT_EQ(valueIn(record, "Name"), "-untouched");
  record.populate("b", "Other", "2");
  EXPECT_EQ(record.getRootId(), "a");
  EXPECT_EQ(valueIn(record, "b"), "2");
}

TEST_F(ManageableDataPromise, IsAValue) {
  promises("A value type; not shared between threads.");
  ManageableData original;
  original.setRootId("a", nullptr);
  original.populate("a", "1");
  ManageableData copy(original);
  ManageableData assigned;
  assigned = original;
  copy.populate("a", "2");
  EXPECT_EQ(valueIn(original, "a"), "1");
  EXPECT_EQ(valueIn(copy, "a"), "2");
  EXPECT_EQ(valueIn(assigned, "a"), "1");
  EXPECT_EQ(assigned.getRootId(), "a");
}

}  // namespace
