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

constexpr std::size_t kSetsInARow = 20;  // few, because a disk's speed varies
constexpr std::size_t kEchoSize = 100;   // bytes

struct Close {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// Writes the same row to a database of the same form, through SQLite alone.
class BareStore {
 public:
  // synchronous: FULL syncs each write, NORMAL none.
  BareStore(const std::filesystem::path& file, const std::string& synchronous) {
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    m_database.reset(database);
    execute("PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; PRAGMA synchronous=" +
            synchronous +
            ";"
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
  void execute(const std::string& sql) {
    if (sqlite3_exec(m_database.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(m_database.get()));
    }
  }

  std::unique_ptr<sqlite3, Close> m_database;
  std::unique_ptr<sqlite3_stmt, Close> m_statement;
};

double waitOfSet(const Line& line, const std::string& value) {
  const std::string set = R"({"verb":"set","key":"date-format","value":")" + value + "\"}";
  return elapsed<Microseconds>([&] { line.control(set); });
}

// The same work without the host, on the same disk.
class Minimum {
 public:
  // The row and its sync.
  double database() {
    return elapsed<Microseconds>([&] { m_synced.write(nextValue()); });
  }

  // What a set needs besides: its request and reply, and a record that is not synced.
  double constant() {
    return elapsed<Microseconds>([&] {
      m_line.send(m_message);
      m_line.drop(m_message.size());
      m_unsynced.write(nextValue());
    });
  }

  [[nodiscard]] const support::TemporaryFolder& sockets() const { return m_sockets; }
  [[nodiscard]] const support::TemporaryFolder& disk() const { return m_disk; }

 private:
  std::string nextValue() { return std::to_string(++m_written % 3); }

  const support::TemporaryFolder m_sockets;
  const support::TemporaryFolder m_disk{diskFolder()};
  const std::string m_message = std::string(kEchoSize, 'e');
  const BaselineProgram m_echo{m_sockets, "echo", "1"};
  const Line m_line{m_echo.socket()};
  BareStore m_synced{m_disk / "synced.db", "FULL"};
  BareStore m_unsynced{m_disk / "unsynced.db", "NORMAL"};
  int m_written = 0;
};

}  // namespace

// After a wait for the disk, as in a set.
Found measureSetConstant() {
  Minimum minimum;
  return {alternately(
              kSetsInARow, [&] { return minimum.constant(); }, [&] { return minimum.database(); })
              .value,
          {}};
}

Found measureSet() {
  Minimum minimum;
  const HostProgram host(minimum.sockets(), minimum.disk() / "state");
  const Line line(host.controlSocket());
  int set = 0;  // so that each set changes the value
  return alternately(
      kSetsInARow,
      [&] {
        const double constant = minimum.constant();
        return waitOfSet(line, std::to_string(++set % 3)) - constant;
      },
      [&] { return minimum.database(); });
}

}  // namespace bench
