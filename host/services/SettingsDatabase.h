#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Executable.h"
#include "base/Mutex.h"
#include "framework/DataAccess.h"
#include "services/SqliteDatabase.h"
#include "services/SqliteStatement.h"

namespace host {

// The device's settings, in the file settings.db of the state folder. This is where a set becomes
// durable: setItem returns true after SQLite has synced the transaction.
// Owner: the device. Thread: any. Syncs: one for each accepted set. The first set after a start
// creates the WAL and has two more, or four if it also creates the security log's. About one set in
// a thousand checkpoints the WAL and has two more; the set after that restarts the WAL and has one
// more.
// Failure: a set that cannot be written is logged, returns false and leaves the old value; a
// damaged file is renamed to settings.db.damaged-N, with one log line, and an empty store replaces
// it.
class SettingsDatabase : public Executable, public DataAccess {
 public:
  static constexpr const char* kFileName = "settings.db";
  static constexpr int kVersion = 1;  // on disk: pragma user_version

  // Creates a missing folder and file, both for their owner only. Throws host::Error when folder or
  // file cannot be written, or the store has a newer version or is in use by another host.
  explicit SettingsDatabase(const std::filesystem::path& folder);

  void init(Context&) override {}
  void shutdown() override {}

  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override;
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override;

 private:
  Mutex m_mutex;  // one transaction at a time
  SqliteDatabase m_database CLOCK_GUARDED_BY(m_mutex);
  SqliteStatement m_set CLOCK_GUARDED_BY(m_mutex);
  SqliteStatement m_get CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
