#pragma once

#include <cstdint>
#include <string>

struct sqlite3_stmt;

namespace host {

class SqliteDatabase;

// One prepared statement, kept for the life of its database and run any number of times: bind,
// next or run, reset. Owner: a service; it goes before the database. Failure: the constructor
// throws host::Error; the others answer false and the database knows why. A parameter that could
// not be bound is a failure of next and run, until reset.
class SqliteStatement {
 public:
  // whenUsed: what is seldom wanted does not keep a start waiting. The first use fails then, not
  // the constructor.
  enum class Prepared { now, whenUsed };

  SqliteStatement(const SqliteDatabase& database, std::string sql,
                  Prepared prepared = Prepared::now);
  ~SqliteStatement();
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;

  // Binds parameter `index`, from 1. Text is any bytes, not copied: it lives until reset.
  void bind(int index, const std::string& text);
  void bind(int index, std::int64_t number);

  // True: there is a row to read. False: no more, or a failure (then failed() is true).
  [[nodiscard]] bool next();
  [[nodiscard]] bool failed() const;

  // Runs it to its end and resets it. False: nothing was changed.
  [[nodiscard]] bool run();

  void reset();

  // Column `index`, from 0, of the present row.
  [[nodiscard]] std::string text(int index) const;
  [[nodiscard]] std::int64_t number(int index) const;
  [[nodiscard]] int integer(int index) const;

 private:
  bool ready();
  void step();

  const SqliteDatabase& m_database;
  const std::string m_sql;
  sqlite3_stmt* m_statement = nullptr;
  int m_failure = 0;  // the first since reset, of preparing or binding
  int m_code = 0;     // of the last step
};

}  // namespace host
