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
#include "services/SqliteDatabase.h"
#include "services/SqliteStatement.h"

namespace host {

// One record of the security log.
struct SecurityRecord {
  std::int64_t number = 0;  // from 1, rising; a missing one was not written, or was deleted
  std::int64_t lost = 0;    // number of records directly before it that could not be written
  std::int64_t count = 1;   // attempts; repeats by one user are counted in one record
  std::time_t time = 0;     // of the first attempt; seconds since 1970-01-01 UTC
  std::time_t lastTime = 0;
  int facility = 0;
  int severity = 0;
  int eventClass = 0;
  int eventCode = 0;
  bool failure = false;
  std::string text;  // text, subject and origin are of the last attempt
  std::string subject;
  std::string origin;  // "uid 1000, pid 4711"; empty: the device itself
};

// The device's security log, in the file security.db of the state folder. It keeps the newest
// records of each Kind, with texts clipped at kLongestText. A record without an origin gets the
// calling thread's (originHere). Records are not synced one by one: they survive the end of the
// process, but a power cut may lose the latest. Owner: the device. Thread: any; a call waits while
// another one checks the file, about 0.1 s for a full log with the longest texts. Failure: a record
// that cannot be written is lost, with a line in the application log, and the next record counts
// it; a damaged file is renamed to security.db.damaged-N.
class SecurityLog : public Executable, public SecurityLogServiceIfc {
 public:
  static constexpr const char* kFileName = "security.db";
  static constexpr int kVersion = 2;  // on disk: pragma user_version; 1 is upgraded when opened
  // The most records of each Kind. Separate limits, so that records that need no sync never
  // displace a set.
  static constexpr std::int64_t kSets = 5'000;
  static constexpr std::int64_t kHostActs = 2'500;
  static constexpr std::int64_t kRefused = 2'500;
  static constexpr std::size_t kLongestText = 4096;  // bytes

  // Event codes of the records that the host writes. It records a management set only when the
  // service throws; otherwise the service does.
  enum class Event { managementSet = 3, clock = 4, injection = 5, remoteSet = 6 };

  SecurityLog();  // in memory
  explicit SecurityLog(const std::filesystem::path& folder);

  // Opens the file and checks all its pages, unless that was done. So does the first call of
  // record, note, list or kept. Throws host::Error as SqliteDatabase does.
  void open();

  void init(Context&) override {}
  void shutdown() override {}

  void record(std::time_t time, int facility, int severity, int eventClass, int eventCode,
              bool failure, const std::string& text, const std::string& subject,
              const std::string& origin) override;

  // Writes a record of the host, with the current time.
  void note(Event event, bool failure, const std::string& text);

  // Up to `most` records after number `after`, oldest first. Throws host::Error when they cannot be
  // read or checked; the failure is also logged.
  [[nodiscard]] std::vector<SecurityRecord> list(std::int64_t after, std::size_t most);

  struct Kept {
    std::int64_t last = 0;       // number of the newest record, 0: none
    std::int64_t records = 0;    // kept
    std::int64_t dropped = 0;    // deleted to make room for newer ones
    std::int64_t unwritten = 0;  // since the newest record
  };
  [[nodiscard]] Kept kept();  // throws as list does

 private:
  // Accepted management sets, other accepted attempts, and all refusals.
  enum class Kind { set, hostAct, refused };

  // Counts of the file's records; read once.
  struct Tally {
    std::int64_t last = 0;
    std::array<std::int64_t, 3> kept{};  // by Kind
    std::int64_t lost = 0;
  };

  explicit SecurityLog(std::unique_ptr<SqliteDatabase> database);

  void openToRead() CLOCK_REQUIRES(m_mutex);
  void readTally() CLOCK_REQUIRES(m_mutex);
  bool write(SecurityRecord record) CLOCK_REQUIRES(m_mutex);
  void countUnwritten() CLOCK_REQUIRES(m_mutex);
  bool countIn(std::int64_t number, const SecurityRecord& record) CLOCK_REQUIRES(m_mutex);
  bool append(const SecurityRecord& record) CLOCK_REQUIRES(m_mutex);
  void dropOldest(Kind kind) CLOCK_REQUIRES(m_mutex);
  [[noreturn]] void failReading() const CLOCK_REQUIRES(m_mutex);
  static Kind kindOf(const SecurityRecord& record);
  static Repeats::Attempt attemptOf(const SecurityRecord& record);

  // Held while a record is written: its number follows the last one, and the statements are shared.
  Mutex m_mutex;
  std::unique_ptr<SqliteDatabase> m_database CLOCK_GUARDED_BY(m_mutex);
  SqliteStatement m_insert CLOCK_GUARDED_BY(m_mutex);
  SqliteStatement m_count CLOCK_GUARDED_BY(m_mutex);
  SqliteStatement m_drop CLOCK_GUARDED_BY(m_mutex);
  SqliteStatement m_list CLOCK_GUARDED_BY(m_mutex);
  SqliteStatement m_sum CLOCK_GUARDED_BY(m_mutex);
  Repeats m_repeats CLOCK_GUARDED_BY(m_mutex);
  Tally m_tally CLOCK_GUARDED_BY(m_mutex);
  bool m_tallied CLOCK_GUARDED_BY(m_mutex) = false;
  std::int64_t m_unwritten CLOCK_GUARDED_BY(m_mutex) = 0;  // since the last written record
};

}  // namespace host
