#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Executable.h"
#include "SecurityLogServiceIfc.h"

namespace host {

class SqliteDatabase;
class SqliteStatement;

// One record of the security log.
struct SecurityRecord {
  std::int64_t number = 0;  // from 1, without gaps
  std::time_t time = 0;     // seconds since 1970-01-01 UTC
  int facility = 0;
  int severity = 0;
  int eventClass = 0;
  int eventCode = 0;
  bool failure = false;
  std::string text;
  std::string subject;
  std::string origin;
};

// The device's security log, in the file security.db of the state folder: append-only, also for
// other programs, and bounded to the newest kBound records, with texts clipped at kLongestText. A
// record is not synced on its own: it survives the end of the process, not always a loss of power.
// Owner: the device. Thread: any. Failure: a record that could not be written is logged and lost; a
// damaged file is set aside as security.db.damaged-N.
class SecurityLog : public Executable, public SecurityLogServiceIfc {
 public:
  static constexpr const char* kFileName = "security.db";
  static constexpr int kVersion = 1;  // on disk: pragma user_version
  static constexpr std::int64_t kBound = 10'000;
  static constexpr std::size_t kLongestText = 4096;  // bytes

  SecurityLog();  // in memory
  // Throws host::Error as SqliteDataAccess does.
  explicit SecurityLog(const std::filesystem::path& folder);
  ~SecurityLog() override;

  void init(Context& context) override;
  void shutdown() override;

  // See SqliteDatabase::beginLog. The first record after it is not synced, either.
  void beginLog();

  // As SqliteDataAccess::foldLater.
  using Later = std::function<void(std::function<void()>)>;
  void foldLater(Later later);

  void record(std::time_t time, int facility, int severity, int eventClass, int eventCode,
              bool failure, const std::string& text, const std::string& subject,
              const std::string& origin) override;

  // The oldest `most` of the records kept after the one of this number, oldest first. Empty on
  // failure, which is logged.
  [[nodiscard]] std::vector<SecurityRecord> list(std::int64_t after, std::size_t most);

  // What is kept now; the bound has taken all before it. 1 and 0 when there is nothing.
  struct Kept {
    std::int64_t first = 1;
    std::int64_t last = 0;
  };
  [[nodiscard]] Kept kept();

 private:
  explicit SecurityLog(std::unique_ptr<SqliteDatabase> database);

  void fold();

  std::mutex m_mutex;  // guards what follows
  std::unique_ptr<SqliteDatabase> m_database;
  std::unique_ptr<SqliteStatement> m_insert;
  std::unique_ptr<SqliteStatement> m_list;
  std::unique_ptr<SqliteStatement> m_kept;
  bool m_failing = false;  // one log line for a row of failures
};

}  // namespace host
