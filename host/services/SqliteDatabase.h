#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

struct sqlite3;

namespace host {

// What describes a store.
struct SqliteStore {
  int version;              // on disk: pragma user_version
  const char* schema;       // SQL that makes an empty database one of `version`
  const char* upgrade;      // SQL that makes a database of the version before one of `version`
  const char* probe;        // a query that fails on a database without that schema
  const char* synchronous;  // FULL: each transaction is synced. NORMAL: only checkpoints are
};

// One open SQLite database in WAL mode, held exclusively by this process. SQLite checkpoints the
// WAL within the transaction that makes it 1,000 pages long. Owner: a service, which serialises its
// calls. Failure: opening throws host::Error; a file that was found damaged twice is set aside as
// FILE.damaged-N, with one log line, and a new one is opened.
class SqliteDatabase {
 public:
  // Creates file and folder where missing, both for their owner only. Throws host::Error: no
  // regular file, not writable, of a newer version, or in use by another process.
  SqliteDatabase(const std::filesystem::path& file, const SqliteStore& store);
  explicit SqliteDatabase(const SqliteStore& store);  // in memory
  ~SqliteDatabase();

  [[nodiscard]] sqlite3* handle() const { return m_handle.get(); }

  // False: the file was removed or replaced, or its folder was. What is written now is lost.
  [[nodiscard]] bool isInPlace() const;

  // One line: what failed and why, in SQLite's and the system's own words.
  [[nodiscard]] std::string failure(const char* what) const;
  void logFailure(const char* what) const;

 private:
  struct Close {
    void operator()(sqlite3* handle) const;
  };

  std::optional<std::string> damageOnOpening(const SqliteStore& store);
  void create();
  void createFile();
  void open(const SqliteStore& store);
  void connect(const std::string& file);
  void bringUp(const SqliteStore& store);
  int versionFound(const SqliteStore& store);
  void setAside(const std::string& reason);
  void execute(const std::string& sql);
  std::string first(const std::string& query);
  void checkpoint();
  [[nodiscard]] std::string words() const;
  [[noreturn]] void fail();

  std::string m_name;  // the file's path, or ":memory:"
  bool m_checkpointFails = false;
  std::unique_ptr<sqlite3, Close> m_handle;
};

}  // namespace host
