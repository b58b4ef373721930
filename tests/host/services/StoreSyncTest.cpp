// How often the stores make the disk write: that is what a set takes its time for, and what flash
// wears out by.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "host/services/StoreFaults.h"
#include "services/SecurityLog.h"
#include "services/SqliteDataAccess.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSettings = "ClockSettings";

class SyncedSettings : public ::testing::Test {
 protected:
  std::uintmax_t logSize() const { return fs::file_size(folder / "settings.db-wal"); }
  void saveOne() const {
    SqliteDataAccess store(folder.path());
    ASSERT_TRUE(store.setItem(kSettings, "DateFormat", "2"));
  }

  support::TemporaryFolder folder;
  support::LogCapture log;
};

TEST_F(SyncedSettings, EachAcceptedSetIsOneSync) {
  SqliteDataAccess store(folder.path());
  ASSERT_TRUE(store.setItem(kSettings, "DateFormat", "none"));
  static_cast<void>(takeSyncs());
  for (int i = 0; i < 100; ++i) {
    ASSERT_TRUE(store.setItem(kSettings, "DateFormat", std::to_string(i)));
    ASSERT_EQ(takeSyncs(), 1U) << "set " << i;
  }
}

// At the first start and at later ones, whose log the orderly end before has taken away.
TEST_F(SyncedSettings, FirstSetIsOneSyncOnceTheLogIsBegun) {
  for (int start = 0; start < 3; ++start) {
    SqliteDataAccess store(folder.path());
    store.beginLog();
    static_cast<void>(takeSyncs());
    ASSERT_TRUE(store.setItem(kSettings, "DateFormat", std::to_string(start)));
    EXPECT_EQ(takeSyncs(), 1U) << "start " << start;
  }
}

TEST_F(SyncedSettings, LogIsBegunOnceAndChangesNothing) {
  saveOne();
  SqliteDataAccess store(folder.path());
  store.beginLog();
  const auto size = logSize();
  static_cast<void>(takeSyncs());
  store.beginLog();
  EXPECT_EQ(takeSyncs(), 0U);
  EXPECT_EQ(logSize(), size);
  EXPECT_EQ(store.getItem(kSettings, "DateFormat"), "2");
}

TEST_F(SyncedSettings, LogThatCannotBeBegunIsToldAndLeftToTheFirstSet) {
  saveOne();
  SqliteDataAccess store(folder.path());
  {
    const FailingWrites fault(ENOSPC);
    store.beginLog();
  }
  EXPECT_EQ(log.entries().size(), 1U) << log.text();
  EXPECT_TRUE(log.hasPart("settings.db\": beginning the log failed: ")) << log.text();
  EXPECT_TRUE(store.setItem(kSettings, "DateFormat", "1"));
  EXPECT_EQ(store.getItem(kSettings, "DateFormat"), "1");
}

TEST_F(SyncedSettings, ReadingNeedsNoSync) {
  SqliteDataAccess store(folder.path());
  ASSERT_TRUE(store.setItem(kSettings, "DateFormat", "0"));
  static_cast<void>(takeSyncs());
  EXPECT_EQ(store.getItem(kSettings, "DateFormat"), "0");
  EXPECT_EQ(takeSyncs(), 0U);
}

TEST_F(SyncedSettings, UnchangedValueNeedsNoSync) {
  SqliteDataAccess store(folder.path());
  ASSERT_TRUE(store.setItem(kSettings, "DateFormat", "0"));
  static_cast<void>(takeSyncs());
  EXPECT_TRUE(store.setItem(kSettings, "DateFormat", "0"));
  EXPECT_EQ(takeSyncs(), 0U);
}

class SyncedSecurityLog : public ::testing::Test {
 protected:
  static void record(SecurityLog& security) {
    security.record(1466035200, 4, 1, 5, 3, false, "text", "", "");
  }

  support::TemporaryFolder folder;
};

TEST_F(SyncedSecurityLog, RecordsAreNotSyncedOneByOne) {
  SecurityLog security(folder.path());
  record(security);
  static_cast<void>(takeSyncs());
  for (int i = 0; i < 100; ++i) record(security);
  EXPECT_EQ(takeSyncs(), 0U);
}

TEST_F(SyncedSecurityLog, FirstRecordIsNotSyncedOnceTheLogIsBegun) {
  for (int start = 0; start < 3; ++start) {
    SecurityLog security(folder.path());
    security.beginLog();
    static_cast<void>(takeSyncs());
    record(security);
    EXPECT_EQ(takeSyncs(), 0U) << "start " << start;
  }
}

}  // namespace
}  // namespace host
