#include "host/services/StoreFile.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>
#include <random>

#include "services/SqliteDatabase.h"

namespace host {
namespace {

// SQLite takes the host's configuration only before its first use. In some orders of the tests, a
// test would use SQLite first.
class ConfiguredSqlite : public ::testing::Environment {
  void SetUp() override {
    const SqliteDatabase first({1, "CREATE TABLE t(x)", nullptr, "SELECT x FROM t", "OFF"});
  }
};
[[maybe_unused]] const ::testing::Environment* const kConfigured =
    ::testing::AddGlobalTestEnvironment(new ConfiguredSqlite);

}  // namespace

void writeBytes(const std::filesystem::path& file, const std::string& bytes) {
  std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
  std::filesystem::permissions(file, std::filesystem::perms(0600));
}

std::string runSql(const std::filesystem::path& file, const std::string& sql) {
  sqlite3* database = nullptr;
  sqlite3_open(file.c_str(), &database);
  const int code = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
  std::string words = code == SQLITE_OK ? "" : sqlite3_errmsg(database);
  sqlite3_close(database);
  std::filesystem::permissions(file, std::filesystem::perms(0600));
  return words;
}

std::string randomBytes(std::size_t length) {
  std::mt19937 random(20160616);
  std::string bytes(length, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() & 0xff);
  return bytes;
}

}  // namespace host
