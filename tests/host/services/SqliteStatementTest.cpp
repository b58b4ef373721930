#include "services/SqliteStatement.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

#include "services/SqliteDatabase.h"

namespace host {
namespace {

constexpr SqliteStore kStore = {1, "CREATE TABLE word(text TEXT NOT NULL)", nullptr,
                                "SELECT text FROM word LIMIT 0", "FULL"};
constexpr const char* kWrong = "SELECT text FROM sentence";

class PreparedStatement : public testing::Test {
 protected:
  const SqliteDatabase m_database{kStore};
};

TEST_F(PreparedStatement, RunsAndReturnsRows) {
  SqliteStatement insert(m_database, "INSERT INTO word VALUES(?1)");
  const std::string text = "time";
  insert.bind(1, text);
  EXPECT_TRUE(insert.run());
  SqliteStatement select(m_database, "SELECT text FROM word");
  ASSERT_TRUE(select.next());
  EXPECT_EQ(select.text(0), text);
  EXPECT_FALSE(select.next());
  EXPECT_FALSE(select.failed());
}

TEST_F(PreparedStatement, WithAFaultFailsAtItsFirstUse) {
  SqliteStatement wrong(m_database, kWrong);
  wrong.bind(1, 7);
  EXPECT_FALSE(wrong.next());
  EXPECT_TRUE(wrong.failed());
  wrong.reset();
  EXPECT_FALSE(wrong.run());
  EXPECT_TRUE(wrong.failed());
}

// The fault shows when the first parameter is bound, and is mended before the second.
TEST_F(PreparedStatement, FailsAfterAFailedBindUntilReset) {
  SqliteStatement select(m_database, "SELECT ?1, ?2 FROM sentence");
  select.bind(1, 7);
  ASSERT_EQ(sqlite3_exec(m_database.handle(),
                         "CREATE TABLE sentence(text); INSERT INTO sentence VALUES('time')",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  select.bind(2, 8);
  EXPECT_FALSE(select.next());
  EXPECT_TRUE(select.failed());
  select.reset();
  select.bind(1, 7);
  select.bind(2, 8);
  ASSERT_TRUE(select.next());
  EXPECT_EQ(select.number(0), 7);
}

TEST_F(PreparedStatement, DoesNotRunAfterAFailedBind) {
  SqliteStatement insert(m_database, "INSERT INTO word VALUES('time' || ?1)");
  insert.bind(1, 1);
  insert.bind(2, 2);
  EXPECT_FALSE(insert.run());
  EXPECT_TRUE(insert.failed());
  insert.bind(1, 1);
  EXPECT_TRUE(insert.run());
}

// The caller asks the database for the message afterwards.
TEST_F(PreparedStatement, KeepsTheMessageOfAFailedBind) {
  SqliteStatement insert(m_database, "INSERT INTO word VALUES('time' || ?1)");
  insert.bind(2, 2);
  insert.bind(1, 1);
  EXPECT_FALSE(insert.next());
  EXPECT_STREQ(sqlite3_errmsg(m_database.handle()), "column index out of range");
}

}  // namespace
}  // namespace host
