// One accepted setting, with its way to the disk.
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include "HostProgram.h"
#include "Line.h"
#include "Measure.h"
#include "StoreCount.h"
#include "Telephone.h"
#include "services/ManagementThread.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr std::size_t kSets = 500;
// Of each start. The last ones are enough for both logs to be folded twice.
constexpr auto kSetsCounted = std::to_array<std::size_t>({20, 20, 2300});

struct Close {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// The same row in a database of the same kind, through SQLite alone.
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

template <class Write>
double microseconds(Write write) {
  const auto begin = Clock::now();
  write();
  return Microseconds(Clock::now() - begin).count();
}

std::string requestToSet(const std::string& value) {
  return controlOf(R"({"verb":"set","key":"date-format","value":")" + value + "\"}");
}

// What the host answers when it has accepted a set.
std::string acceptanceOf(const Line& line) {
  line.send(requestToSet("2"));
  std::string reply = line.takeFrame().payload();
  if (reply.find(R"("ok":true)") == std::string::npos) throw std::runtime_error(reply);
  return reply;
}

double microsecondsToSet(const Line& line, const std::string& value, const std::string& accepted) {
  const std::string request = requestToSet(value);
  Line::Taken reply;
  const double taken = microseconds([&] {
    line.send(request);
    reply = line.takeFrame();
  });
  if (reply.payload() != accepted) throw std::runtime_error("not accepted: " + reply.payload());
  return taken;
}

// What the host does beside, on the thread that sets, is not the set's.
std::size_t syncsOfSet(Telephone& telephone, const std::string& value) {
  std::size_t syncs = 0;
  telephone.device().managementThread().run([&] {
    const StoreCount count;
    telephone.set("date-format", value);
    syncs = count.syncs();
  });
  return syncs;
}

// Of each set; and what the process syncs besides is added to `folding`.
std::vector<double> syncsOfSets(Telephone& telephone, std::size_t sets, double& folding) {
  const StoreCount count;
  std::vector<double> found;
  for (std::size_t i = 0; i < sets; ++i) {
    found.push_back(static_cast<double>(syncsOfSet(telephone, std::to_string(i % 3))));
  }
  telephone.device().managementThread().run([] {});  // what is left to be folded is
  folding += static_cast<double>(count.syncs()) - std::accumulate(found.begin(), found.end(), 0.0);
  return found;
}

}  // namespace

void measureSetData(Findings& findings) {
  const Folder sockets;
  const Folder disk(Folder::Place::disk);
  const HostProgram host(sockets, disk / "state");
  const Line line(host.controlSocket());
  const std::string accepted = acceptanceOf(line);
  BareStore bare(disk / "bare.db");
  Rounds rounds;  // of one write each: the disk is now fast, now slow
  for (std::size_t i = 0; i < kSets; ++i) {
    const std::string value = std::to_string(i % 3);  // another one each time
    const double below = microseconds([&] { bare.write(value); });
    rounds.add(microsecondsToSet(line, value, accepted), below);
  }
  findings["set-data"] = ratioOf(rounds);
}

// Of each of the first sets after a start, of those of a telephone that has run before, and of
// those between which the logs are folded.
void measureSyncs(Findings& findings) {
  const Folder disk(Folder::Place::disk);
  std::vector<double> found;
  double folding = 0;
  for (const std::size_t sets : kSetsCounted) {
    Telephone telephone(disk.path());
    const std::vector<double> syncs = syncsOfSets(telephone, sets, folding);
    found.insert(found.end(), syncs.begin(), syncs.end());
  }
  const auto [fewest, most] = std::minmax_element(found.begin(), found.end());
  findings["set-data-fewest-syncs"] = alone(*fewest);
  findings["set-data-most-syncs"] = alone(*most);
  findings["set-data-folding"] = alone(folding);
}

}  // namespace bench
