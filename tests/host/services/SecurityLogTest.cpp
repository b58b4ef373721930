#include "services/SecurityLog.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "host/services/StoreFaults.h"
#include "host/services/StoreFile.h"
#include "runtime/Error.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

void record(SecurityLog& log, const std::string& text) {
  log.record(1, 4, 1, 5, 3, false, text, "", "");
}

class SecurityLogFile : public ::testing::Test {
 protected:
  std::filesystem::path file() const { return folder / SecurityLog::kFileName; }

  support::TemporaryFolder folder;
  support::LogCapture log{4};  // without SQLite's own words
};

TEST_F(SecurityLogFile, KeepsEveryFieldOfARecord) {
  SecurityLog security(folder.path());
  security.record(1466035200, 4, 1, 5, 3, true, "ClockSettings set data time(\n)", "user", "web");
  const auto records = security.list(0, 10);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].number, 1);
  EXPECT_EQ(records[0].time, 1466035200);
  EXPECT_EQ(records[0].facility, 4);
  EXPECT_EQ(records[0].severity, 1);
  EXPECT_EQ(records[0].eventClass, 5);
  EXPECT_EQ(records[0].eventCode, 3);
  EXPECT_TRUE(records[0].failure);
  EXPECT_EQ(records[0].text, "ClockSettings set data time(\n)");
  EXPECT_EQ(records[0].subject, "user");
  EXPECT_EQ(records[0].origin, "web");
}

TEST_F(SecurityLogFile, ListsWhatComesAfterANumberOldestFirst) {
  SecurityLog security(folder.path());
  for (const char* const text : {"a", "b", "c"}) record(security, text);
  const auto records = security.list(1, 2);
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0].text, "b");
  EXPECT_EQ(records[1].text, "c");
  ASSERT_EQ(security.list(0, 1).size(), 1U);
  EXPECT_EQ(security.list(0, 1)[0].text, "a");
  EXPECT_TRUE(security.list(3, 10).empty());
  EXPECT_TRUE(security.list(0, 0).empty());
}

TEST_F(SecurityLogFile, RecordsAndNumbersGoOnAfterReopening) {
  {
    SecurityLog security(folder.path());
    record(security, "a");
  }
  SecurityLog security(folder.path());
  record(security, "b");
  const auto records = security.list(0, 10);
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[1].number, 2);
}

TEST_F(SecurityLogFile, OldestRecordsGoAtTheBound) {
  SecurityLog security(folder.path());
  for (std::int64_t i = 1; i <= SecurityLog::kBound; ++i) record(security, std::to_string(i));
  EXPECT_EQ(security.kept().first, 1);
  EXPECT_EQ(security.list(0, SIZE_MAX).size(), static_cast<std::size_t>(SecurityLog::kBound));
  record(security, "one more");
  const auto records = security.list(0, SIZE_MAX);
  ASSERT_EQ(records.size(), static_cast<std::size_t>(SecurityLog::kBound));
  EXPECT_EQ(records.front().text, "2");
  EXPECT_EQ(records.back().text, "one more");
  EXPECT_EQ(security.kept().first, 2);
  EXPECT_EQ(security.kept().last, SecurityLog::kBound + 1);
}

TEST_F(SecurityLogFile, OtherProgramsCanNeitherChangeNorDeleteARecord) {
  {
    SecurityLog security(folder.path());
    record(security, "a");
    record(security, "b");
  }
  const std::string refusal = "the security log is append-only";
  EXPECT_EQ(runSql(file(), "UPDATE record SET failure = 0"), refusal);
  EXPECT_EQ(runSql(file(), "DELETE FROM record WHERE number = 1"), refusal);
  EXPECT_EQ(runSql(file(), "DELETE FROM record"), refusal);
  EXPECT_EQ(runSql(file(), "REPLACE INTO record SELECT * FROM record"), refusal);
  EXPECT_EQ(SecurityLog(folder.path()).list(0, 10).size(), 2U);
}

// A number far ahead would have every record in the file count as one that the bound takes.
TEST_F(SecurityLogFile, OtherProgramsCanOnlyAppendTheNextNumber) {
  {
    SecurityLog security(folder.path());
    for (const char* const text : {"a", "b", "c"}) record(security, text);
  }
  const auto insert = [this](const std::string& how, const std::string& number) {
    return runSql(file(),
                  how + " INTO record VALUES(" + number + ", 1, 4, 1, 5, 3, 0, 'x', '', '')");
  };
  const std::string refusal = "the security log is append-only";
  for (const char* const how : {"INSERT", "INSERT OR IGNORE", "INSERT OR FAIL", "REPLACE"})
    for (const char* const number :
         {"5", "20000", "9223372036854775807", "0", "-1", "-9223372036854775808"})
      EXPECT_EQ(insert(how, number), refusal) << how << ' ' << number;
  EXPECT_EQ(insert("INSERT", "4"), "");
  EXPECT_EQ(insert("INSERT", "NULL"), "");
  SecurityLog security(folder.path());
  record(security, "d");
  const auto records = security.list(0, 10);
  ASSERT_EQ(records.size(), 6U);
  EXPECT_EQ(records[0].text, "a");
  EXPECT_EQ(records[5].number, 6);
}

TEST_F(SecurityLogFile, FirstRecordOfAllIsNumberOne) {
  { const SecurityLog security(folder.path()); }
  EXPECT_EQ(runSql(file(), "INSERT INTO record VALUES(2, 1, 4, 1, 5, 3, 0, 'x', '', '')"),
            "the security log is append-only");
  EXPECT_EQ(runSql(file(), "INSERT INTO record VALUES(1, 1, 4, 1, 5, 3, 0, 'x', '', '')"), "");
}

TEST_F(SecurityLogFile, RecordThatTheBoundHasTakenIsNotWrittenAnew) {
  {
    SecurityLog security(folder.path());
    for (std::int64_t i = 0; i <= SecurityLog::kBound; ++i) record(security, "x");
  }
  EXPECT_EQ(runSql(file(), "INSERT INTO record VALUES(1, 1, 4, 1, 5, 3, 0, 'x', '', '')"),
            "the security log is append-only");
  EXPECT_EQ(SecurityLog(folder.path()).kept().first, 2);
}

TEST_F(SecurityLogFile, LongTextsAreClippedAndSaySo) {
  SecurityLog security(folder.path());
  const std::string longest(SecurityLog::kLongestText, 'x');
  security.record(1, 4, 1, 5, 3, false, longest, longest + "y", longest + "yz");
  const auto records = security.list(0, 1);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].text, longest);
  EXPECT_EQ(records[0].subject, longest + "... (4097 bytes)");
  EXPECT_EQ(records[0].origin, longest + "... (4098 bytes)");
}

TEST_F(SecurityLogFile, KeepsTextsOfAnyBytes) {
  SecurityLog security(folder.path());
  const std::string bytes("a\0b\xFF\n", 5);
  record(security, bytes);
  ASSERT_EQ(security.list(0, 1).size(), 1U);
  EXPECT_EQ(security.list(0, 1)[0].text, bytes);
}

TEST_F(SecurityLogFile, FailingStoreIsLoggedOnceAndAgainAfterARecovery) {
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

TEST_F(SecurityLogFile, DamagedOneIsSetAside) {
  writeBytes(file(), randomBytes(9000));
  SecurityLog security(folder.path());
  record(security, "a");
  EXPECT_EQ(security.list(0, 10).size(), 1U);
  EXPECT_EQ(bytesOf(folder / "security.db.damaged-1"), randomBytes(9000));
  EXPECT_EQ(log.entries().size(), 1U) << log.text();
}

TEST_F(SecurityLogFile, NewerVersionIsRefused) {
  ASSERT_EQ(runSql(file(), "PRAGMA user_version=2"), "");
  EXPECT_THROW(SecurityLog{folder.path()}, Error);
}

TEST(SecurityLogInMemory, KeepsRecords) {
  SecurityLog security;
  EXPECT_EQ(security.kept().first, 1);
  EXPECT_EQ(security.kept().last, 0);
  record(security, "a");
  EXPECT_EQ(security.list(0, 10).size(), 1U);
  EXPECT_EQ(security.kept().first, 1);
  EXPECT_EQ(security.kept().last, 1);
}

}  // namespace
}  // namespace host
