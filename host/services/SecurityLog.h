#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Executable.h"
#include "SecurityLogServiceIfc.h"
#include "base/Mutex.h"
#include "services/Repeats.h"

namespace host {

class SqliteDatabase;
class SqliteStatement;

// One record of the security log.
struct SecurityRecord {
  std::int64_t number = 0;  // from 1, rising; a missing one was not written, or was deleted
  std::int64_t lost = 0;    // how many directly before it could not be written
  std::int64_t count = 1;   // of attempts: repeats of one user are counted in one record
  std::time_t time = 0;     // of the first attempt; seconds since 1970-01-01 UTC
  std::time_t lastTime = 0;
  int facility = 0;
  int severity = 0;
  int eventClass = 0;
  int eventCode = 0;
  bool failure = false;
  std::string text;  // text, subject and origin are those of the last attempt
  std::string subject;
  std::string origin;  // who: "uid 1000, pid 4711"; empty: the device itself
};

// The device's security log, in the file security.db of the state folder. It keeps the newest
// records of each Kind, with texts clipped at kLongestText. A record without an origin gets the
// calling thread's (originHere). Records are not synced one by one: they survive the end of the
// process, but not always a loss of power. Owner: the device. Thread: any. Failure: a record that
// cannot be written is lost, with a line in the application log, and the next record counts it; a
// damaged file is set aside as security.db.damaged-N.
class SecurityLog : public Executable, public SecurityLogServiceIfc {
 public:
  static constexpr const char* kFileName = "security.db";
  static constexpr int kVersion = 2;  // on disk: pragma user_version; 1 is brought up when opened
  // Kept of each Kind: a record that costs its source no sync never displaces a set.
  static constexpr std::int64_t kSets = 5'000;
  static constexpr std::int64_t kHostActs = 2'500;
  static constexpr std::int64_t kRefused = 2'500;
  static constexpr std::size_t kLongestText = 4096;  // bytes

  // Event codes of the records that the host writes. The service records management sets itself,
  // unless it throws.
  enum class Event { managementSet = 3, clock = 4, injection = 5, remoteSet = 6 };

  SecurityLog();  // in memory
  // Throws host::Error as SettingsDatabase does.
  explicit SecurityLog(const std::filesystem::path& folder);
  ~SecurityLog() override;

  void init(Context& context) override;
  void shutdown() override;

  void record(std::time_t time, int facility, int severity, int eventClass, int eventCode,
              bool failure, const std::string& text, const std::string& subject,
              const std::string& origin) override;

  // Writes a record of the host's own, at the present time.
  void note(Event event, bool failure, const std::string& text);

  // Up to `most` records after number `after`, oldest first. Throws host::Error, which is logged
  // too, when they cannot be read.
  [[nodiscard]] std::vector<SecurityRecord> list(std::int64_t after, std::size_t most);

  struct Kept {
    std::int64_t last = 0;       // number of the newest record, 0: none
    std::int64_t records = 0;    // kept
    std::int64_t dropped = 0;    // deleted in favour of newer ones of their kind
    std::int64_t unwritten = 0;  // since the newest record
  };
  [[nodiscard]] Kept kept();  // throws as list does

 private:
  // Accepted management sets, other accepted acts, and all refusals.
  enum class Kind { set, hostAct, refused };

  // Summary of the file; read once.
  struct Tally {
    std::int64_t last = 0;
    std::array<std::int64_t, 3> kept{};  // by Kind
    std::int64_t lost = 0;
  };
  struct Statements;

  explicit SecurityLog(std::unique_ptr<SqliteDatabase> database);

  void readTally() CLOCK_REQUIRES(m_mutex);
  bool write(SecurityRecord record) CLOCK_REQUIRES(m_mutex);
  void countUnwritten() CLOCK_REQUIRES(m_mutex);
  bool countIn(std::int64_t number, const SecurityRecord& record) CLOCK_REQUIRES(m_mutex);
  bool append(const SecurityRecord& record) CLOCK_REQUIRES(m_mutex);
  void dropOldest(Kind kind) CLOCK_REQUIRES(m_mutex);
  [[noreturn]] void failReading() const CLOCK_REQUIRES(m_mutex);
  static Kind kindOf(const SecurityRecord& record);
  static Repeats::Attempt attemptOf(const SecurityRecord& record);

  Mutex m_mutex;
  std::unique_ptr<SqliteDatabase> m_database CLOCK_GUARDED_BY(m_mutex);
  std::unique_ptr<Statements> m_statements CLOCK_GUARDED_BY(m_mutex);
  Repeats m_repeats CLOCK_GUARDED_BY(m_mutex);
  Tally m_tally CLOCK_GUARDED_BY(m_mutex);
  bool m_tallied CLOCK_GUARDED_BY(m_mutex) = false;
  std::int64_t m_unwritten CLOCK_GUARDED_BY(m_mutex) = 0;  // since the last written record
};

}  // namespace host
