// How often the stores sync: syncs take most of the time of a set, and wear out flash.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/services/SecurityLogFile.h"
#include "host/services/StoreFaults.h"
#include "host/services/StoredSettings.h"

namespace host {
namespace {

constexpr int kMany = 2300;  // changes: enough for two checkpoints of either store
constexpr std::uintmax_t kLongWal = 1000 * 4120;  // bytes: SQLite's own threshold of 1,000 pages
constexpr std::uintmax_t kOneChange = 30 * 4120;  // at most
constexpr std::size_t kMostSyncs = 4;             // a set that also checkpoints has three

std::uintmax_t walSize(const std::filesystem::path& file) {
  return std::filesystem::file_size(file.string() + "-wal");
}

TEST_F(StoredSettings, EachAcceptedSetIsOneSyncUnlessTheWalIsCheckpointed) {
  SettingsDatabase store(folder.path());
  std::vector<int> others;
  for (int i = 0; i < kMany; ++i) {
    static_cast<void>(takeSyncs());
    ASSERT_TRUE(store.setItem(kSchema, "DateFormat", std::to_string(i)));
    const std::size_t syncs = takeSyncs();
    ASSERT_LE(syncs, kMostSyncs) << "set " << i;
    if (syncs != 1) others.push_back(i);
  }
  // The first set, and for each checkpoint the set that makes the WAL long and the next one.
  EXPECT_LE(others.size(), 5U) << ::testing::PrintToString(others);
  EXPECT_LT(walSize(file()), kLongWal + kOneChange);
}

// The name of a new file is on the disk once its folder is synced.
TEST_F(StoredSettings, FirstSetOfANewFileSyncsTheFolder) {
  SettingsDatabase store(folder.path());
  ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "0"));
  EXPECT_GE(takeFolderSyncs(), 1U);
}

TEST_F(StoredSettings, ReadAndUnchangedValueNeedNoSync) {
  SettingsDatabase store(folder.path());
  ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "0"));
  static_cast<void>(takeSyncs());
  EXPECT_EQ(store.getItem(kSchema, "DateFormat"), "0");
  EXPECT_TRUE(store.setItem(kSchema, "DateFormat", "0"));
  EXPECT_EQ(takeSyncs(), 0U);
}

class SyncedSecurityLog : public SecurityLogFile {
 protected:
  // A different text each time, so that none is counted in the record before.
  void record(SecurityLog& security) {
    security.record(1466035200, 4, 1, 5, 3, false, "text " + std::to_string(++recorded), "", "");
  }

  std::int64_t recorded = 0;
};

TEST_F(SyncedSecurityLog, RecordsAreNotSyncedOneByOne) {
  SecurityLog security(folder.path());
  record(security);
  static_cast<void>(takeSyncs());
  for (int i = 0; i < 100; ++i) record(security);
  EXPECT_EQ(takeSyncs(), 0U);
}

TEST_F(SyncedSecurityLog, RecordsAreSyncedWithEachCheckpoint) {
  SecurityLog security(folder.path());
  std::vector<int> synced;
  for (int i = 0; i < kMany; ++i) {
    static_cast<void>(takeSyncs());
    record(security);
    if (takeSyncs() != 0) synced.push_back(i);
  }
  EXPECT_GE(synced.size(), 2U);
  EXPECT_LE(synced.size(), 5U) << ::testing::PrintToString(synced);
  EXPECT_LT(walSize(file()), kLongWal + kOneChange);
  EXPECT_EQ(security.kept().last, kMany);
}

TEST_F(SyncedSecurityLog, FailedCheckpointLosesNoRecordAndIsLoggedOnce) {
  {
    SecurityLog security(folder.path());
    record(security);
    {
      const FailingSyncs fault;
      for (int i = 0; i < kMany; ++i) record(security);
      EXPECT_GT(walSize(file()), kLongWal + kOneChange);
    }
    record(security);
    EXPECT_EQ(security.kept().unwritten, 0);
  }
  ASSERT_EQ(log.entries().size(), 1U) << log.text();
  EXPECT_TRUE(log.hasPart("security.db\": checkpoint failed: disk I/O error")) << log.text();
  EXPECT_EQ(SecurityLog(folder.path()).kept().last, recorded);
}

}  // namespace
}  // namespace host
