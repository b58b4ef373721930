// Security logs of an earlier version, damaged ones, and stores that fail.
#include <cerrno>
#include <new>

#include "base/Error.h"
#include "host/services/SecurityLogFile.h"
#include "host/services/StoreFaults.h"
#include "host/services/StoreFile.h"
#include "support/ErrorOf.h"
#include "support/NoMemory.h"

namespace host {
namespace {

TEST_F(SecurityLogFile, IsOpenedWhenItIsNeeded) {
  SecurityLog security(folder.path());
  EXPECT_FALSE(std::filesystem::exists(file()));
  security.open();
  EXPECT_TRUE(std::filesystem::exists(file()));
}

TEST_F(SecurityLogFile, LogsAFailingStoreOnceUntilItRecovers) {
  SecurityLog security(folder.path());
  record(security, "a");
  for (int round = 0; round < 2; ++round) {
    const FailingWrites fault(ENOSPC);
    record(security, "lost");
    record(security, "lost");
  }
  EXPECT_EQ(log.entries().size(), 1U) << log.text();
  record(security, "b");
  {
    const FailingWrites fault(EIO);
    record(security, "lost");
  }
  EXPECT_EQ(log.entries().size(), 2U) << log.text();
  EXPECT_EQ(security.list(0, 10).size(), 2U);
}

TEST_F(SecurityLogFile, RecordsThatCannotBeWrittenLeaveAGap) {
  SecurityLog security(folder.path());
  record(security, "same");
  {
    const FailingWrites fault(ENOSPC);
    record(security, "lost");
    record(security, "same");
    EXPECT_EQ(security.kept().unwritten, 2);
  }
  EXPECT_EQ(security.kept().last, 1);
  record(security, "same");
  EXPECT_EQ(security.kept().unwritten, 0);
  EXPECT_EQ(security.kept().dropped, 0);
  const auto records = security.list(0, 10);
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[1].number, 4);
  EXPECT_EQ(records[1].lost, 2);
  EXPECT_EQ(SecurityLog(folder / "other").kept().last, 0);
}

TEST_F(SecurityLogFile, LogsALostRecordWhenItsFolderIsRemoved) {
  SecurityLog security(folder / "state");
  record(security, "a");
  std::filesystem::rename(folder / "state", folder / "away");
  record(security, "b");
  EXPECT_EQ(security.kept().unwritten, 1);
  EXPECT_TRUE(log.hasPart("writing failed: its file was removed or replaced")) << log.text();
}

// More than SQLite caches.
constexpr std::size_t kFilled = 500;

void fill(SecurityLog& security) {
  const std::string longest(SecurityLog::kLongestText, 'x');
  for (std::size_t i = 0; i < kFilled; ++i) {
    security.record(1, 4, 1, 5, 3, false, std::to_string(i), longest, longest);
  }
}

TEST_F(SecurityLogFile, ThatCannotBeReadIsNotReportedAsEmpty) {
  SecurityLog security(folder.path());
  fill(security);
  const std::string reason =
      "store \"" + file().string() + "\": reading failed: database disk image is malformed";
  for (int i = 0; i < 2; ++i) {
    const FailingRead fault(1);
    EXPECT_EQ(errorOf([&] { static_cast<void>(security.list(0, SIZE_MAX)); }), reason);
  }
  const std::string line = "clockhost 2: " + reason + '\n';
  EXPECT_EQ(log.text(), line + line);
  EXPECT_EQ(security.list(0, SIZE_MAX).size(), kFilled);
}

// Full of refused sets, of which none can be deleted until two more were added.
constexpr const char* kFullForNow =
    "DELETE FROM record;"
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2500)"
    "INSERT INTO record SELECT i, 1, 0, 1, i, i, 4, 1, 5, 3, 'x', '', '' FROM n;"
    "CREATE TRIGGER stays BEFORE DELETE ON record WHEN (SELECT max(number) FROM record) < 2502"
    " BEGIN SELECT RAISE(ABORT, 'it stays'); END";

TEST_F(SecurityLogFile, LogsThatTheOldestRecordCannotBeDropped) {
  record(*std::make_unique<SecurityLog>(folder.path()), "makes the file");
  ASSERT_EQ(runSql(file(), kFullForNow), "");
  SecurityLog security(folder.path());
  security.record(1, 4, 1, 5, 3, true, "one more", "", "");
  EXPECT_EQ(log.text(), "clockhost 2: store \"" + file().string() +
                            "\": dropping the oldest record failed: it stays\n");
  EXPECT_EQ(security.kept().records, SecurityLog::kRefused + 1);
  security.record(1, 4, 1, 5, 3, true, "and one", "", "");
  EXPECT_EQ(security.kept().records, SecurityLog::kRefused);
}

TEST_F(SecurityLogFile, CanBeReadAfterAReadWithoutMemory) {
  SecurityLog security(folder.path());
  record(security, "a");
  record(security, "b");
  bool ranOut = true;
  for (std::size_t after = 0; ranOut; ++after) {
    try {
      const support::NoMemory none(after);
      static_cast<void>(security.list(0, 10));
    } catch (const std::bad_alloc&) {
    }
    ranOut = support::NoMemory::ranOut();
    ASSERT_EQ(security.list(0, 10).size(), 2U) << "after " << after << " allocations";
  }
}

TEST_F(SecurityLogFile, ThatCannotBeCountedIsNotReportedAsEmpty) {
  {
    SecurityLog security(folder.path());
    fill(security);
  }
  SecurityLog security(folder.path());
  security.open();
  const FailingRead fault(1);
  EXPECT_NE(errorOf([&] { static_cast<void>(security.kept()); }), "");
  EXPECT_EQ(security.kept().records, kFilled);
}

// As the previous version wrote it, after the first six records were dropped.
constexpr const char* kVersionOne = R"sql(
CREATE TABLE record(
  number INTEGER PRIMARY KEY, time INTEGER NOT NULL,
  facility INTEGER NOT NULL, severity INTEGER NOT NULL,
  event_class INTEGER NOT NULL, event_code INTEGER NOT NULL,
  failure INTEGER NOT NULL, text TEXT NOT NULL, subject TEXT NOT NULL, origin TEXT NOT NULL) STRICT;
INSERT INTO record VALUES(7, 1466035200, 4, 1, 5, 3, 0, 'a', '', '');
INSERT INTO record VALUES(8, 1466035201, 4, 1, 5, 3, 1, 'b', 'user', 'web');
CREATE TRIGGER record_is_new BEFORE INSERT ON record
  WHEN EXISTS (SELECT 1 FROM record WHERE number = NEW.number)
  BEGIN SELECT RAISE(ABORT, 'the security log is append-only'); END;
CREATE TRIGGER record_is_next AFTER INSERT ON record
  WHEN NEW.number <> (SELECT max(number) FROM record) OR
       NEW.number <> 1 AND NOT EXISTS (SELECT 1 FROM record WHERE number = NEW.number - 1)
  BEGIN SELECT RAISE(ABORT, 'the security log is append-only'); END;
CREATE TRIGGER record_is_final BEFORE UPDATE ON record
  BEGIN SELECT RAISE(ABORT, 'the security log is append-only'); END;
CREATE TRIGGER record_stays BEFORE DELETE ON record
  WHEN OLD.number > (SELECT max(number) FROM record) - 10000
  BEGIN SELECT RAISE(ABORT, 'the security log is append-only'); END;
CREATE TRIGGER record_goes AFTER INSERT ON record
  BEGIN DELETE FROM record WHERE number <= NEW.number - 10000; END;
PRAGMA user_version=1)sql";

TEST_F(SecurityLogFile, UpgradesThePreviousVersion) {
  ASSERT_EQ(runSql(file(), kVersionOne), "");
  for (int start = 0; start < 2; ++start) {
    SecurityLog security(folder.path());
    if (start == 0) record(security, "c");
    const auto records = security.list(0, 10);
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].number, 7);
    EXPECT_EQ(records[0].lastTime, 1466035200);
    EXPECT_EQ(records[0].count, 1);
    EXPECT_EQ(fieldsOf(records[0]), std::tuple(1466035200, 4, 1, 5, 3, false, "a", "", ""));
    EXPECT_EQ(fieldsOf(records[1]), std::tuple(1466035201, 4, 1, 5, 3, true, "b", "user", "web"));
    EXPECT_EQ(records[2].number, 9);
    EXPECT_EQ(security.kept().dropped, 6);
  }
  EXPECT_TRUE(log.entries().empty()) << log.text();
}

TEST_F(SecurityLogFile, FailedUpgradeChangesNothing) {
  ASSERT_EQ(runSql(file(), kVersionOne), "");
  {
    const FailingWrites fault(ENOSPC);
    EXPECT_THROW(SecurityLog(folder.path()).open(), Error);
  }
  EXPECT_EQ(SecurityLog(folder.path()).list(0, 10).size(), 2U);
}

TEST_F(SecurityLogFile, SetsADatabaseWithOtherTablesAside) {
  ASSERT_EQ(runSql(file(), "CREATE TABLE other(x); PRAGMA user_version=1"), "");
  EXPECT_TRUE(SecurityLog(folder.path()).list(0, 10).empty());
  EXPECT_TRUE(std::filesystem::exists(folder / "security.db.damaged-1"));
}

TEST_F(SecurityLogFile, RefusesANewerVersion) {
  ASSERT_EQ(runSql(file(), "PRAGMA user_version=3"), "");
  SecurityLog security(folder.path());
  for (int i = 0; i < 2; ++i) EXPECT_THROW(security.open(), Error);
}

// A log with a damaged page behind those of its header and schema.
class SecurityLogWithADamagedPage : public SecurityLogFile {
 protected:
  SecurityLogWithADamagedPage() {
    fill(*std::make_unique<SecurityLog>(folder.path()));
    std::string bytes = support::contentOf(file());
    writeBytes(file(), bytes.replace(bytes.size() / 2, 4096, randomBytes(4096)));
  }
  bool isSetAside() const { return std::filesystem::exists(folder / "security.db.damaged-1"); }
};

TEST_F(SecurityLogWithADamagedPage, IsSetAsideWhenItIsOpened) {
  SecurityLog security(folder.path());
  EXPECT_FALSE(isSetAside());
  for (int i = 0; i < 2; ++i) security.open();
  EXPECT_TRUE(isSetAside());
  EXPECT_EQ(log.entries().size(), 1U) << log.text();
}

TEST_F(SecurityLogWithADamagedPage, IsOpenedBeforeTheFirstRecord) {
  SecurityLog security(folder.path());
  record(security, "a");
  EXPECT_TRUE(isSetAside());
  EXPECT_EQ(security.list(0, 10).size(), 1U);
}

TEST_F(SecurityLogWithADamagedPage, CountsRecordsWhileItCannotBeSetAside) {
  SecurityLog security(folder.path());
  std::string reason;
  {
    const WatchedRename failing(true);
    for (int i = 0; i < 2; ++i) record(security, "lost");
    reason = errorOf([&] { static_cast<void>(security.list(0, 10)); });
    EXPECT_NE(reason.find("is damaged and cannot be set aside"), std::string::npos) << reason;
    EXPECT_EQ(errorOf([&] { static_cast<void>(security.kept()); }), reason);
  }
  EXPECT_EQ(log.text(), "clockhost 2: store \"" + file().string() +
                            "\": writing failed: it could not be opened\n" +
                            "clockhost 2: " + reason + "\nclockhost 2: " + reason + '\n');
  record(security, "kept");
  const auto records = security.list(0, 10);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].lost, 2);
}

}  // namespace
}  // namespace host
