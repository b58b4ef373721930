#include "services/SettingsDatabase.h"

namespace host {
namespace {

constexpr SqliteStore kSettingsStore = {
    SettingsDatabase::kVersion,
    "CREATE TABLE settings(schema TEXT NOT NULL, key TEXT NOT NULL, value TEXT NOT NULL,"
    " PRIMARY KEY(schema, key)) STRICT, WITHOUT ROWID",
    nullptr,
    "INSERT INTO settings VALUES('', '', '') ON CONFLICT(schema, key) DO UPDATE SET value = ''",
    "FULL"};

}  // namespace

SettingsDatabase::SettingsDatabase(const std::filesystem::path& folder)
    : m_database(folder / kFileName, kSettingsStore),
      m_set(m_database,
            "INSERT INTO settings(schema, key, value) VALUES(?1, ?2, ?3)"
            " ON CONFLICT(schema, key) DO UPDATE SET value = excluded.value"),
      m_get(m_database, "SELECT value FROM settings WHERE schema = ?1 AND key = ?2") {}

bool SettingsDatabase::setItem(const std::string& schema, const std::string& key,
                               const std::string& value) {
  const MutexLock lock(m_mutex);
  m_set.bind(1, schema);
  m_set.bind(2, key);
  m_set.bind(3, value);
  if (m_database.isInPlace() && m_set.run()) return true;
  m_database.logFailure("writing");
  m_set.reset();
  return false;
}

std::optional<std::string> SettingsDatabase::getItem(const std::string& schema,
                                                     const std::string& key) {
  const MutexLock lock(m_mutex);
  m_get.bind(1, schema);
  m_get.bind(2, key);
  std::optional<std::string> value;
  if (m_get.next()) {
    value = m_get.text(0);
  } else if (m_get.failed()) {
    m_database.logFailure("reading");
  }
  m_get.reset();
  return value;
}

}  // namespace host
