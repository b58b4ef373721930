#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

struct sqlite3;

namespace host {

// What a store needs to be opened.
struct SqliteStore {
  int version;              // on disk: pragma user_version
  const char* schema;       // SQL that makes an empty database one of `version`
  const char* upgrade;      // SQL that makes a database of the version before one of `version`
  const char* probe;        // a query that fails on a database without that schema
  const char* synchronous;  // FULL: each transaction is synced. NORMAL: only checkpoints are
};

// One open SQLite database with a write-ahead log, held exclusively by this process.
// Owner: a service, which also sees to one thread at a time. Failure: opening throws host::Error;
// a file found damaged twice is set aside as FILE.damaged-N, with one log line, and a new one is
// opened.
class SqliteDatabase {
 public:
  // Creates file and folder where missing, both for their owner only. Throws host::Error: no
  // regular file, not writable, of a newer version, or in use by another process.
  SqliteDatabase(const std::filesystem::path& file, const SqliteStore& store);
  explicit SqliteDatabase(const SqliteStore& store);  // in memory
  ~SqliteDatabase();

  [[nodiscard]] sqlite3* handle() const { return m_handle.get(); }

  // Begins the write-ahead log of a file that has none, as the first change would: that takes syncs
  // of its own, for which the first change need not wait then. It tries again after a failure.
  void beginLog();

  // The write-ahead log is folded into the file when it is long, which takes syncs of its own. From
  // now on `due` is called instead, once, within the change that made the log long: it sees to it
  // that fold is called soon. Where nobody does, a change folds a log of twice the length itself.
  void foldLater(std::function<void()> due);

  // Folds the log into the file and begins it again, so that the next change is one sync.
  void fold();

  // False: the file was removed or replaced, or its folder was. What is written now is lost.
  [[nodiscard]] bool isInPlace() const;

  // One line: what failed and why, in SQLite's and the system's own words.
  [[nodiscard]] std::string failure(const char* what) const;
  void logFailure(const char* what) const;

 private:
  struct Close {
    void operator()(sqlite3* handle) const;
  };

  static int onChange(void* self, sqlite3* handle, const char* name, int pages);
  void noteLogOf(int pages);
  [[nodiscard]] bool moveLogIntoFile() const;
  void writeVersion() const;
  void askToFold();
  std::optional<std::string> damageOnOpening(const SqliteStore& store);
  void create();
  void open(const SqliteStore& store);
  void bringUp(const SqliteStore& store);
  int versionFound(const SqliteStore& store);
  void setAside(const std::string& reason);
  void execute(const std::string& sql);
  std::string first(const std::string& query);
  [[nodiscard]] std::string words() const;
  [[noreturn]] void fail();

  std::string m_name;  // the file's path, or ":memory:"
  const int m_version;
  bool m_made = false;  // the file is this object's
  std::function<void()> m_foldIsDue;
  bool m_asked = false;  // to fold, since the log was begun
  std::unique_ptr<sqlite3, Close> m_handle;
};

}  // namespace host
