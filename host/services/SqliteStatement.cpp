#include "services/SqliteStatement.h"

#include <sqlite3.h>

#include <utility>

#include "runtime/Error.h"
#include "services/SqliteDatabase.h"

namespace host {

SqliteStatement::SqliteStatement(const SqliteDatabase& database, std::string sql, Prepared prepared)
    : m_database(database), m_sql(std::move(sql)) {
  if (prepared == Prepared::whenUsed || prepare() == SQLITE_OK) return;
  throw Error(std::string("store: ") + sqlite3_errmsg(database.handle()));
}

// Without a statement, what is asked of SQLite next fails.
int SqliteStatement::prepare() {
  if (m_statement != nullptr) return SQLITE_OK;
  return sqlite3_prepare_v3(m_database.handle(), m_sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT,
                            &m_statement, nullptr);
}

SqliteStatement::~SqliteStatement() {
  sqlite3_finalize(m_statement);
}

void SqliteStatement::bind(int index, const std::string& text) {
  prepare();
  // A null destructor is SQLite's name for "not copied".
  sqlite3_bind_text64(m_statement, index, text.data(), text.size(), nullptr, SQLITE_UTF8);
}

void SqliteStatement::bind(int index, std::int64_t number) {
  prepare();
  sqlite3_bind_int64(m_statement, index, number);
}

bool SqliteStatement::next() {
  prepare();
  m_code = sqlite3_step(m_statement);
  return m_code == SQLITE_ROW;
}

bool SqliteStatement::failed() const {
  return m_code != SQLITE_ROW && m_code != SQLITE_DONE;
}

bool SqliteStatement::run() {
  prepare();
  m_code = sqlite3_step(m_statement);
  while (m_code == SQLITE_ROW) m_code = sqlite3_step(m_statement);
  reset();
  return m_code == SQLITE_DONE;
}

void SqliteStatement::reset() {
  if (m_statement == nullptr) return;
  sqlite3_reset(m_statement);
  sqlite3_clear_bindings(m_statement);
}

std::string SqliteStatement::text(int index) const {
  const void* const bytes = sqlite3_column_blob(m_statement, index);
  const int length = sqlite3_column_bytes(m_statement, index);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

std::int64_t SqliteStatement::number(int index) const {
  return sqlite3_column_int64(m_statement, index);
}

int SqliteStatement::integer(int index) const {
  return sqlite3_column_int(m_statement, index);
}

}  // namespace host
