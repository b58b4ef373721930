#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "Executable.h"
#include "base/Mutex.h"
#include "framework/DataAccess.h"

namespace host {

class SqliteDatabase;
class SqliteStatement;

// The device's persistent settings, in the file settings.db of the state folder.
// Owner: the device. Thread: any. Each accepted set is one transaction and one sync. The first set
// after a start, which creates the WAL, has two more (with the security log's, four); about one in
// a thousand, which checkpoints the WAL, has two more; the next, which restarts it, one more.
// Failure: a set that could not be written is logged, returns false and leaves the old value; a
// damaged file is set aside as settings.db.damaged-N, with one log line, and an empty store serves.
class SettingsDatabase : public Executable, public DataAccess {
 public:
  static constexpr const char* kFileName = "settings.db";
  static constexpr int kVersion = 1;  // on disk: pragma user_version

  // Creates the folder (for its owner only) and the file where missing. Throws host::Error: the
  // folder or file cannot be written, the store is of a newer version or in use by another host.
  explicit SettingsDatabase(const std::filesystem::path& folder);
  ~SettingsDatabase() override;

  void init(Context& context) override;
  void shutdown() override;

  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override;
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override;

 private:
  Mutex m_mutex;
  std::unique_ptr<SqliteDatabase> m_database CLOCK_POINTEE_GUARDED_BY(m_mutex);
  std::unique_ptr<SqliteStatement> m_set CLOCK_POINTEE_GUARDED_BY(m_mutex);
  std::unique_ptr<SqliteStatement> m_get CLOCK_POINTEE_GUARDED_BY(m_mutex);
};

}  // namespace host
