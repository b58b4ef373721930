#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

struct sqlite3;

namespace host {

// Describes a store to SqliteDatabase.
struct SqliteStore {
  int version;              // on disk: pragma user_version
  const char* schema;       // SQL that creates the tables in an empty database
  const char* upgrade;      // SQL that converts the previous version's tables; null for version 1
  const char* probe;        // a statement that only that schema can prepare; it is not run
  const char* synchronous;  // FULL: each transaction is synced. NORMAL: only checkpoints are
};

// An open SQLite database in WAL mode, held exclusively by this process. The transaction that makes
// the WAL 1,000 pages long also checkpoints it. Owner: a service, which serialises its calls.
// Failure: open() throws host::Error; a file that was found damaged twice is renamed to
// FILE.damaged-N, with one log line, and a new one is created.
class SqliteDatabase {
 public:
  // Opens it now, or only when open() is called.
  enum class Opening { now, later };
  SqliteDatabase(const std::filesystem::path& file, const SqliteStore& store,
                 Opening opening = Opening::now);
  explicit SqliteDatabase(const SqliteStore& store);  // in memory
  ~SqliteDatabase();

  // Opens the file, unless that was done, and checks header, tables and all pages for damage.
  // Creates a missing folder and file, both for their owner only. Throws host::Error when the file
  // is not a regular one, not writable, of a newer version, or in use by another process; the next
  // call then tries again. REQUIRES: until the first success no statement is prepared.
  void open();

  [[nodiscard]] sqlite3* handle() const { return m_handle.get(); }

  // False: the file or its folder was removed or replaced, so that writes are lost.
  [[nodiscard]] bool isInPlace() const;

  // One line that says what failed, with the messages of SQLite and the system.
  [[nodiscard]] std::string failure(const char* what) const;
  void logFailure(const char* what) const;

 private:
  struct Close {
    void operator()(sqlite3* handle) const;
  };

  template <class Work>
  std::optional<std::string> damageFoundBy(Work work);
  void tryToOpen();
  void create();
  void createFile();
  void connect(const std::string& file);
  void configure();
  void checkPages();
  int versionFound();
  void probe() const;
  void setAside(const std::string& reason);
  void execute(const std::string& sql);
  std::string first(const std::string& query);
  void checkpoint();
  [[nodiscard]] std::string message() const;
  [[noreturn]] void fail() const;

  const std::string m_name;  // the file's path, or ":memory:"
  const SqliteStore m_store;
  bool m_checkpointFails = false;
  std::unique_ptr<sqlite3, Close> m_handle;
};

}  // namespace host
