// How often the stores make the disk write: that is what a set takes its time for, and what flash
// wears out by.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "host/services/StoreFaults.h"
#include "services/SecurityLog.h"
#include "services/SqliteDataAccess.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSettings = "ClockSettings";

// Some more changes than a log holds before it is folded.
constexpr int kMany = 2300;
constexpr std::uintmax_t kLongLog = 1000 * 4120;  // bytes
constexpr std::uintmax_t kOneSet = 30 * 4120;     // at most, of a long value

// What a store has to be done later.
class Tasks {
 public:
  std::function<void(std::function<void()>)> taker() {
    return [this](std::function<void()> task) { m_tasks.push_back(std::move(task)); };
  }
  [[nodiscard]] std::size_t count() const { return m_tasks.size(); }
  void run() {
    for (const auto& task : std::exchange(m_tasks, {})) task();
  }

 private:
  std::vector<std::function<void()>> m_tasks;
};

class SyncedSettings : public ::testing::Test {
 protected:
  std::uintmax_t logSize() const { return fs::file_size(folder / "settings.db-wal"); }
  // Ten pages, none of which is as it was: those that are would not be written.
  static std::string longValue(int number) {
    return std::to_string(number) + std::string(40'000, static_cast<char>('a' + number % 26));
  }
  static void setMany(SqliteDataAccess& store, int count) {
    for (int i = 0; i < count; ++i)
      ASSERT_TRUE(store.setItem(kSettings, "DateFormat", longValue(i)));
  }
  // Until the log of a store that is new has this size.
  void fillLog(SqliteDataAccess& store, std::uintmax_t bytes) const {
    for (int i = 0; i < 500 && logSize() < bytes; ++i)
      ASSERT_TRUE(store.setItem(kSettings, "DateFormat", longValue(i)));
  }
  void saveOne() const {
    SqliteDataAccess store(folder.path());
    ASSERT_TRUE(store.setItem(kSettings, "DateFormat", "2"));
  }

  support::TemporaryFolder folder;
  support::LogCapture log{4};  // without SQLite's own words
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

TEST_F(SyncedSettings, EachSetIsOneSyncAlsoWhereTheLogIsFolded) {
  SqliteDataAccess store(folder.path());
  Tasks later;
  store.foldLater(later.taker());
  store.beginLog();
  int folds = 0;
  for (int i = 0; i < kMany; ++i) {
    static_cast<void>(takeSyncs());
    ASSERT_TRUE(store.setItem(kSettings, "DateFormat", std::to_string(i)));
    ASSERT_EQ(takeSyncs(), 1U) << "set " << i;
    if (later.count() == 0) continue;
    ++folds;
    later.run();
    EXPECT_EQ(takeSyncs(), 4U) << "fold " << folds;
    EXPECT_EQ(store.getItem(kSettings, "DateFormat"), std::to_string(i));
  }
  EXPECT_EQ(folds, 2);
  EXPECT_LT(logSize(), kLongLog + kOneSet);
}

TEST_F(SyncedSettings, LogIsAskedToBeFoldedOnce) {
  SqliteDataAccess store(folder.path());
  Tasks later;
  store.foldLater(later.taker());
  fillLog(store, 3 * kLongLog / 2);
  EXPECT_EQ(later.count(), 1U);
}

TEST_F(SyncedSettings, LogThatNobodyFoldsDoesNotGrowForEver) {
  SqliteDataAccess store(folder.path());
  Tasks later;
  store.foldLater(later.taker());
  setMany(store, 500);
  EXPECT_LT(logSize(), 2 * kLongLog + kOneSet);
  EXPECT_EQ(store.getItem(kSettings, "DateFormat"), longValue(499));
}

// The end comes each time before what is for later is done, and comes without a word.
TEST_F(SyncedSettings, LogOfAHostThatIsKilledAgainAndAgainDoesNotGrowForEver) {
  fs::path state = folder.path();
  for (int life = 0; life < 50; ++life) {
    Tasks later;
    SqliteDataAccess store(state);
    store.foldLater(later.taker());
    setMany(store, 10);
    const fs::path next = folder / ("life-" + std::to_string(life));
    fs::create_directory(next);
    for (const char* const name : {"settings.db", "settings.db-wal"})
      fs::copy_file(state / name, next / name);
    ASSERT_LT(fs::file_size(next / "settings.db-wal"), 2 * kLongLog + kOneSet) << "life " << life;
    state = next;
  }
}

TEST_F(SyncedSettings, FoldThatFailsIsToldOnceAndLosesNothing) {
  SqliteDataAccess store(folder.path());
  Tasks later;
  store.foldLater(later.taker());
  fillLog(store, kLongLog);
  {
    const FailingSyncs fault;
    later.run();
  }
  fillLog(store, 3 * kLongLog / 2);
  EXPECT_EQ(later.count(), 0U);
  ASSERT_EQ(log.entries().size(), 1U) << log.text();
  EXPECT_TRUE(log.hasPart("settings.db\": moving the log into the file failed: ")) << log.text();
  setMany(store, 100);
  EXPECT_EQ(store.getItem(kSettings, "DateFormat"), longValue(99));
}

TEST_F(SyncedSettings, LogIsAskedForAgainWhenThereWasNoMemoryToAsk) {
  SqliteDataAccess store(folder.path());
  int asked = 0;
  store.foldLater([&](const std::function<void()>&) {
    if (++asked == 1) throw std::bad_alloc();
  });
  fillLog(store, 3 * kLongLog / 2);
  EXPECT_EQ(asked, 2);
  EXPECT_TRUE(log.entries().empty()) << log.text();
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
  // Another one each time: none is counted in the one before.
  void record(SecurityLog& security) {
    security.record(1466035200, 4, 1, 5, 3, false, "text " + std::to_string(++m_number), "", "");
  }

  support::TemporaryFolder folder;

 private:
  int m_number = 0;
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

TEST_F(SyncedSecurityLog, RecordsAreNotSyncedWhereTheLogIsFoldedEither) {
  SecurityLog security(folder.path());
  Tasks later;
  security.foldLater(later.taker());
  security.beginLog();
  int folds = 0;
  for (int i = 0; i < kMany; ++i) {
    static_cast<void>(takeSyncs());
    record(security);
    ASSERT_EQ(takeSyncs(), 0U) << "record " << i;
    if (later.count() == 0) continue;
    ++folds;
    later.run();
    EXPECT_EQ(takeSyncs(), 3U) << "fold " << folds;
  }
  EXPECT_EQ(folds, 2);
  EXPECT_LT(fs::file_size(folder / "security.db-wal"), kLongLog + kOneSet);
  EXPECT_EQ(security.kept().last, kMany);
}

}  // namespace
}  // namespace host
