#pragma once

#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace bench {

struct CloseSqlite {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, CloseSqlite>;
using Statement = std::unique_ptr<sqlite3_stmt, CloseSqlite>;

// These throw std::runtime_error.
inline void require(bool done, const Database& database) {
  if (!done) throw std::runtime_error(sqlite3_errmsg(database.get()));
}
inline Database openDatabase(const std::string& file,
                             int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) {
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &database, flags, nullptr);
  Database opened(database);
  require(code == SQLITE_OK, opened);
  return opened;
}
inline void execute(const Database& database, const std::string& sql) {
  require(sqlite3_exec(database.get(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK,
          database);
}
inline Statement prepare(const Database& database, const char* sql) {
  sqlite3_stmt* prepared = nullptr;
  const int code = sqlite3_prepare_v2(database.get(), sql, -1, &prepared, nullptr);
  Statement statement(prepared);
  require(code == SQLITE_OK, database);
  return statement;
}

}  // namespace bench
