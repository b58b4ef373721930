#pragma once

#include <cstdint>
#include <string>

struct sqlite3_stmt;

namespace host {

class SqliteDatabase;

// A statement that can run any number of times: bind, then run(), or next() until it is false and
// reset(). Its first use prepares it, which shortens the host's start. Owner: a service, which
// destroys it before the database. Failure: functions return false, and the database has the
// message. After a failed bind, next and run fail until reset.
class SqliteStatement {
 public:
  SqliteStatement(const SqliteDatabase& database, std::string sql);
  ~SqliteStatement();
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;

  // Binds parameter `index`, from 1. Text is any bytes; it is not copied and must live until reset.
  void bind(int index, const std::string& text);
  void bind(int index, std::int64_t number);

  // True: there is a row to read. False: no more rows, or a failure (then failed() is true).
  [[nodiscard]] bool next();
  [[nodiscard]] bool failed() const;

  // Runs the statement to its end and resets it. False: it failed and changed nothing.
  [[nodiscard]] bool run();

  void reset();

  // Column `index`, from 0, of the current row.
  [[nodiscard]] std::string text(int index) const;
  [[nodiscard]] std::int64_t number(int index) const;
  [[nodiscard]] int integer(int index) const;

 private:
  bool ready();
  void step();

  const SqliteDatabase& m_database;
  const std::string m_sql;
  sqlite3_stmt* m_statement = nullptr;
  int m_failure = 0;  // of the first prepare or bind that failed since reset
  int m_code = 0;     // of the last step
};

}  // namespace host
