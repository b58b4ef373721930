#include "services/SqliteStatement.h"

#include <gtest/gtest.h>

#include <string>

#include "runtime/Error.h"
#include "services/SqliteDatabase.h"

namespace host {
namespace {

constexpr SqliteStore kStore = {1, "CREATE TABLE word(text TEXT NOT NULL)",
                                "SELECT text FROM word LIMIT 0", "FULL"};
constexpr const char* kWrong = "SELECT text FROM sentence";
constexpr auto kWhenUsed = SqliteStatement::Prepared::whenUsed;

class Statement : public testing::Test {
 protected:
  const SqliteDatabase m_database{kStore};
};

TEST_F(Statement, ThatIsPreparedWhenUsedDoesTheSame) {
  SqliteStatement insert(m_database, "INSERT INTO word VALUES(?1)", kWhenUsed);
  const std::string text = "time";
  insert.bind(1, text);
  EXPECT_TRUE(insert.run());
  SqliteStatement select(m_database, "SELECT text FROM word", kWhenUsed);
  ASSERT_TRUE(select.next());
  EXPECT_EQ(select.text(0), text);
  EXPECT_FALSE(select.next());
  EXPECT_FALSE(select.failed());
}

TEST_F(Statement, ThatIsWrongFailsWhenItIsMade) {
  EXPECT_THROW(SqliteStatement(m_database, kWrong), Error);
}

TEST_F(Statement, ThatIsWrongFailsWhenItIsUsed) {
  SqliteStatement wrong(m_database, kWrong, kWhenUsed);
  wrong.bind(1, 7);
  EXPECT_FALSE(wrong.next());
  EXPECT_TRUE(wrong.failed());
  wrong.reset();
  EXPECT_FALSE(wrong.run());
  EXPECT_TRUE(wrong.failed());
}

}  // namespace
}  // namespace host
