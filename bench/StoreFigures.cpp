// Measures an accepted set, from the request to the reply, on a disk.
#include <stdexcept>
#include <string>

#include "Alternate.h"
#include "BlockingClient.h"
#include "HostProgram.h"
#include "Measure.h"
#include "Sqlite.h"

namespace bench {
namespace {

constexpr std::size_t kSetsInARow = 20;    // few, because a disk's speed varies
constexpr std::size_t kMessageSize = 100;  // bytes

// Writes the same row to a database of the same form, through SQLite alone.
class BareStore {
 public:
  // synchronous: FULL syncs each write, NORMAL none.
  BareStore(const std::filesystem::path& file, const std::string& synchronous)
      : m_database(openDatabase(file)) {
    execute(m_database,
            "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; PRAGMA synchronous=" +
                synchronous +
                ";"
                "CREATE TABLE settings(schema TEXT NOT NULL, key TEXT NOT NULL, value TEXT NOT "
                "NULL, PRIMARY KEY(schema, key)) STRICT, WITHOUT ROWID");
    m_statement = prepare(m_database,
                          "INSERT INTO settings VALUES('ClockSettings', 'DateFormat', ?1)"
                          " ON CONFLICT(schema, key) DO UPDATE SET value = excluded.value");
  }

  void write(const std::string& value) {
    sqlite3_bind_text(m_statement.get(), 1, value.c_str(), -1, nullptr);
    require(sqlite3_step(m_statement.get()) == SQLITE_DONE, m_database);
    sqlite3_reset(m_statement.get());
  }

 private:
  Database m_database;
  Statement m_statement;
};

double waitOfSet(const BlockingClient& connection, const std::string& value) {
  const std::string set = R"({"verb":"set","key":"date-format","value":")" + value + "\"}";
  return elapsed<Microseconds>([&] { connection.control(set); });
}

// The same work without the host, on the same disk.
class Minimum {
 public:
  // The row and its sync.
  double database() {
    return elapsed<Microseconds>([&] { m_synced.write(nextValue()); });
  }

  // The rest of a set: request, reply, and a security record that is not synced.
  double constant() {
    return elapsed<Microseconds>([&] {
      m_connection.send(m_message);
      m_connection.drop(m_message.size());
      m_unsynced.write(nextValue());
    });
  }

  [[nodiscard]] const support::TemporaryFolder& disk() const { return m_disk; }

 private:
  std::string nextValue() { return std::to_string(++m_written % 3); }

  const support::TemporaryFolder m_disk{diskFolder()};
  const std::string m_message = std::string(kMessageSize, 'e');
  const BaselineProgram m_echo{"echo", "1"};
  const BlockingClient m_connection{m_echo.socket()};
  BareStore m_synced{m_disk / "synced.db", "FULL"};
  BareStore m_unsynced{m_disk / "unsynced.db", "NORMAL"};
  int m_written = 0;
};

}  // namespace

// Each time right after a synced write, as in a set.
Sample measureSetConstant() {
  Minimum minimum;
  return {alternately(
              kSetsInARow, [&] { return minimum.constant(); }, [&] { return minimum.database(); })
              .value,
          {}};
}

Sample measureSet() {
  Minimum minimum;
  const HostProgram host({"--state", minimum.disk() / "state"});
  const BlockingClient connection(host.controlSocket());
  int set = 0;  // so that each set changes the value
  return alternately(
      kSetsInARow,
      [&] {
        const double constant = minimum.constant();
        return waitOfSet(connection, std::to_string(++set % 3)) - constant;
      },
      [&] { return minimum.database(); });
}

}  // namespace bench
