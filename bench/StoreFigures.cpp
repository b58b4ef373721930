// One accepted setting, from the request to the reply, with its write to the disk.
#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "Alternate.h"
#include "HostProgram.h"
#include "Line.h"
#include "Measure.h"

namespace bench {
namespace {

constexpr std::size_t kSetsInARow = 10;  // few, because a disk's speed varies

struct Close {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// Writes the same row to a database of the same form, through SQLite alone.
class BareStore {
 public:
  explicit BareStore(const std::filesystem::path& file) {
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    m_database.reset(database);
    execute(
        "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL;"
        "CREATE TABLE settings(schema TEXT NOT NULL, key TEXT NOT NULL, value TEXT NOT NULL,"
        " PRIMARY KEY(schema, key)) STRICT, WITHOUT ROWID");
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database,
                       "INSERT INTO settings VALUES('ClockSettings', 'DateFormat', ?1)"
                       " ON CONFLICT(schema, key) DO UPDATE SET value = excluded.value",
                       -1, &statement, nullptr);
    m_statement.reset(statement);
  }

  void write(const std::string& value) {
    sqlite3_bind_text(m_statement.get(), 1, value.c_str(), -1, nullptr);
    if (sqlite3_step(m_statement.get()) != SQLITE_DONE) {
      throw std::runtime_error(sqlite3_errmsg(m_database.get()));
    }
    sqlite3_reset(m_statement.get());
  }

 private:
  void execute(const char* sql) {
    if (sqlite3_exec(m_database.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(m_database.get()));
    }
  }

  std::unique_ptr<sqlite3, Close> m_database;
  std::unique_ptr<sqlite3_stmt, Close> m_statement;
};

std::string requestToSet(const std::string& value) {
  return controlOf(R"({"verb":"set","key":"date-format","value":")" + value + "\"}");
}

double waitOfSet(const Line& line, const std::string& value) {
  const std::string request = requestToSet(value);
  std::string reply;
  const double wait = elapsed<Microseconds>([&] { reply = line.ask(request); });
  if (reply.find(R"("ok":true)") == std::string::npos) throw std::runtime_error(reply);
  return wait;
}

}  // namespace

Found measureSet() {
  const support::TemporaryFolder sockets;
  const support::TemporaryFolder disk(diskFolder());
  const HostProgram host(sockets, disk / "state");
  const Line line(host.controlSocket());
  BareStore bare(disk / "bare.db");
  int written = 0;
  int set = 0;  // so that each set changes the value
  return alternately(
      kSetsInARow, [&] { return waitOfSet(line, std::to_string(++set % 3)); },
      [&] {
        const std::string value = std::to_string(++written % 3);
        return elapsed<Microseconds>([&] { bare.write(value); });
      });
}

}  // namespace bench
