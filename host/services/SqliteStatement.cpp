#include "services/SqliteStatement.h"

#include <sqlite3.h>

#include <utility>

#include "services/SqliteDatabase.h"

namespace host {

SqliteStatement::SqliteStatement(const SqliteDatabase& database, std::string sql)
    : m_database(database), m_sql(std::move(sql)) {}

// After a failure SQLite is not called again, because it keeps only the last call's message.
bool SqliteStatement::ready() {
  if (m_statement == nullptr && m_failure == SQLITE_OK) {
    m_failure = sqlite3_prepare_v3(m_database.handle(), m_sql.c_str(), -1,
                                   SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr);
  }
  return m_failure == SQLITE_OK;
}

SqliteStatement::~SqliteStatement() {
  sqlite3_finalize(m_statement);
}

void SqliteStatement::bind(int index, const std::string& text) {
  if (!ready()) return;
  // A null destructor is SQLite's name for "not copied".
  m_failure =
      sqlite3_bind_text64(m_statement, index, text.data(), text.size(), nullptr, SQLITE_UTF8);
}

void SqliteStatement::bind(int index, std::int64_t number) {
  if (ready()) m_failure = sqlite3_bind_int64(m_statement, index, number);
}

// Not run after a failed bind, because an unbound parameter would count as null.
void SqliteStatement::step() {
  m_code = ready() ? sqlite3_step(m_statement) : m_failure;
}

bool SqliteStatement::next() {
  step();
  return m_code == SQLITE_ROW;
}

bool SqliteStatement::failed() const {
  return m_code != SQLITE_ROW && m_code != SQLITE_DONE;
}

bool SqliteStatement::run() {
  do step();
  while (m_code == SQLITE_ROW);
  reset();
  return m_code == SQLITE_DONE;
}

void SqliteStatement::reset() {
  m_failure = SQLITE_OK;
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
