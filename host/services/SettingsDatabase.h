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
// Owner: the device. Thread: any. Syncs: one for each accepted set, and in addition
//   two    for the first set after a start, which creates the WAL
//   two    if that set also creates the WAL of the security log
//   two    for a set that checkpoints the WAL: about one in a thousand
//   one    for the set after that, which restarts the WAL.
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
  // Held until the sync, so that no reader sees a value that is not yet durable.
  Mutex m_mutex;
  SqliteDatabase m_database CLOCK_GUARDED_BY(m_mutex);
  SqliteStatement m_set CLOCK_GUARDED_BY(m_mutex);
  SqliteStatement m_get CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
