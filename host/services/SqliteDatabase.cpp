#include "services/SqliteDatabase.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

#include "Logging.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "framework/OwnerOnly.h"
#include "services/DamagedName.h"

namespace host {
namespace {

// A host that was killed may still hold the file for a moment.
constexpr int kBusyMilliseconds = 500;

// Pages at which the WAL is checkpointed; SQLite's own default.
constexpr int kLongWal = 1000;

// The file is damaged. Caught in this source.
struct Damaged {
  std::string reason;
};

std::string describe(const std::string& name, const std::string& fault) {
  return "store \"" + name + "\" " + fault;
}

// Logs SQLite's own messages. Callers log a failure again; a warning, for example that an open file
// was removed, is logged only here.
void logMessage(void*, int code, const char* message) {
  const int level = (code & 0xff) == SQLITE_WARNING ? kLogWarning : kLogInfo;
  logAppUni("clockhost", level, __FILE__, __LINE__, "SQLite: %s (%d)", message, code);
}

// These databases have a few pages each, so SQLite need not preallocate twenty pages nor count its
// memory. SQLite allows this only before its first use in the process.
void configureOnce() {
  static const int configured = sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0) |
                                sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) |
                                sqlite3_config(SQLITE_CONFIG_LOG, logMessage, nullptr);
  static_cast<void>(configured);
}

[[noreturn]] void refuse(const std::string& file) {
  throw Error(describe(file, std::string("cannot be written: ") + std::strerror(errno)));
}

std::string unfinished(const std::string& file) {
  return file + ".new";
}

}  // namespace

SqliteDatabase::SqliteDatabase(const std::filesystem::path& file, const SqliteStore& store,
                               Opening opening)
    : m_name(file.string()), m_store(store) {
  // Later it would be too late to refuse to start.
  opening == Opening::now ? open() : tightenFile(m_name);
}

SqliteDatabase::SqliteDatabase(const SqliteStore& store) : m_name(":memory:"), m_store(store) {
  connect(m_name);
  configure();
}

SqliteDatabase::~SqliteDatabase() {
  if (m_handle) checkpoint();
}

// A transient read error looks like damage, so it is retried once.
void SqliteDatabase::open() {
  if (m_handle) return;
  const auto damage = damageFoundBy([this] { tryToOpen(); });
  if (!damage) return;
  if (const auto again = damageFoundBy([this] { tryToOpen(); })) {
    setAside(*again);
    if (const auto fresh = damageFoundBy([this] { tryToOpen(); }))
      throw Error(describe(m_name, "is damaged: " + *fresh));
  } else {
    logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
              "store \"%s\" was read on the second attempt: %s", m_name.c_str(), damage->c_str());
  }
}

template <class Work>
std::optional<std::string> SqliteDatabase::damageFoundBy(Work work) try {
  work();
  return std::nullopt;
} catch (const Damaged& damage) {
  m_handle.reset();
  return damage.reason;
} catch (...) {
  m_handle.reset();
  ::unlink(unfinished(m_name).c_str());
  throw;
}

void SqliteDatabase::tryToOpen() {
  create();
  connect(m_name);
  configure();
}

// SQLite's own checkpoint does not report a failure. A failure loses nothing: the WAL keeps the
// changes and grows, and the next opening reads it. It is logged once until a checkpoint succeeds.
void SqliteDatabase::checkpoint() {
  const int code =
      sqlite3_wal_checkpoint_v2(handle(), nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  const bool failedBefore = std::exchange(m_checkpointFails, code != SQLITE_OK);
  if (m_checkpointFails && !failedBefore) logFailure("checkpoint");
}

void SqliteDatabase::Close::operator()(sqlite3* handle) const {
  sqlite3_close_v2(handle);
}

std::string SqliteDatabase::failure(const char* what) const {
  const std::string failed = "store \"" + m_name + "\": " + what + " failed: ";
  if (!m_handle) return failed + "it could not be opened";
  const std::string why = message();  // before isInPlace, whose call would replace it
  return failed + (isInPlace() ? why : "its file was removed or replaced");
}

void SqliteDatabase::logFailure(const char* what) const {
  logAppUni("clockhost", kLogError, __FILE__, __LINE__, "%s", failure(what).c_str());
}

// Needed because SQLite continues to write to a file that was unlinked.
bool SqliteDatabase::isInPlace() const {
  int moved = 0;
  sqlite3_file_control(handle(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
  return moved == 0;
}

// For a null handle SQLite answers "out of memory".
std::string SqliteDatabase::message() const {
  const std::string message = sqlite3_errmsg(handle());
  const int code = sqlite3_errcode(handle()) & 0xff;
  const int reason = sqlite3_system_errno(handle());
  const bool fromSystem = code == SQLITE_IOERR || code == SQLITE_CANTOPEN;
  return fromSystem && reason != 0 ? message + " (" + std::strerror(reason) + ")" : message;
}

void SqliteDatabase::create() {
  makeOwnFolder(std::filesystem::path(m_name).parent_path());
  for (const char* const part : {"", "-wal", "-shm", "-journal"}) tightenFile(m_name + part);
  std::error_code code;
  const auto size = std::filesystem::file_size(m_name, code);
  if (code == std::errc::no_such_file_or_directory) {
    if (std::filesystem::is_symlink(std::filesystem::symlink_status(m_name)))
      throw Error(describe(m_name, "is a link to a missing file; mount its folder or remove it"));
    return createFile();
  }
  if (!code && size == 0) throw Damaged{"file is empty"};
}

// Creates the file for its owner only, because the settings contain a shared secret: SQLite would
// let other users read it. The file gets its name once it has its first page, so that the next
// start does not take an empty file for damage when the program was killed in between.
void SqliteDatabase::createFile() {
  const std::string file = unfinished(m_name);
  ::unlink(file.c_str());
  const int fresh = ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (fresh < 0) refuse(m_name);
  ::close(fresh);
  connect(file);
  execute("PRAGMA journal_mode=OFF; PRAGMA user_version=0");
  m_handle.reset();
  // SQLite would apply these files of an earlier database to the new one.
  for (const char* const part : {"-wal", "-shm", "-journal"}) ::unlink((m_name + part).c_str());
  if (std::rename(file.c_str(), m_name.c_str()) != 0) refuse(m_name);
}

void SqliteDatabase::connect(const std::string& file) {
  constexpr int kFlags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  configureOnce();
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &handle, kFlags, nullptr);
  m_handle.reset(handle);
  if (code != SQLITE_OK) fail();
  sqlite3_busy_timeout(handle, kBusyMilliseconds);
}

// Writes nothing until the version has shown that the file is one of this store. Tables are
// upgraded only after the check.
void SqliteDatabase::configure() {
  execute("PRAGMA locking_mode=EXCLUSIVE");
  const int version = versionFound();
  checkPages();
  execute(std::string("PRAGMA journal_mode=WAL; PRAGMA synchronous=") + m_store.synchronous);
  const auto committed = [](void* self, sqlite3*, const char*, int pages) {
    if (pages >= kLongWal) static_cast<SqliteDatabase*>(self)->checkpoint();
    return SQLITE_OK;  // a failed checkpoint is no failure of the transaction
  };
  sqlite3_wal_hook(handle(), committed, this);
  if (version != m_store.version) {
    execute("BEGIN IMMEDIATE;" + std::string(version == 0 ? m_store.schema : m_store.upgrade) +
            ";PRAGMA user_version=" + std::to_string(m_store.version) + ";COMMIT");
  }
  probe();
}

void SqliteDatabase::checkPages() {
  // Without "main." SQLite would open a temporary database, to check that too.
  const std::string integrity = first("PRAGMA main.integrity_check(1)");
  if (integrity != "ok") throw Damaged{integrity};
  sqlite3_db_release_memory(handle());  // it has read all pages
}

void SqliteDatabase::probe() const {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v2(handle(), m_store.probe, -1, &statement, nullptr);
  sqlite3_finalize(statement);
  if (code != SQLITE_OK) fail();
}

// 0 for a new database.
int SqliteDatabase::versionFound() {
  if (sqlite3_db_readonly(handle(), "main") == 1) {
    throw Error(describe(m_name, "cannot be written: it is read-only"));
  }
  const int version = std::stoi(first("PRAGMA user_version"));
  if (version < 0) throw Damaged{"its version is " + std::to_string(version)};
  if (version > m_store.version) {
    throw Error(describe(m_name, "is of version " + std::to_string(version) +
                                     ", newer than this program's " +
                                     std::to_string(m_store.version)));
  }
  if (version != 0 || first("SELECT count(*) FROM sqlite_schema") == "0") return version;
  throw Damaged{"it is another program's database"};
}

void SqliteDatabase::setAside(const std::string& reason) {
  const std::string name = damagedName(m_name);
  if (std::rename(m_name.c_str(), name.c_str()) != 0) {
    throw Error(describe(
        m_name, std::string("is damaged and cannot be set aside: ") + std::strerror(errno)));
  }
  // The WAL belongs to the damaged file. It may be missing.
  static_cast<void>(std::rename((m_name + "-wal").c_str(), (name + "-wal").c_str()));
  logAppUni("clockhost", kLogError, __FILE__, __LINE__,
            "store \"%s\" is damaged (%s): set aside as \"%s\", starting with an empty one",
            m_name.c_str(), reason.c_str(), name.c_str());
}

void SqliteDatabase::execute(const std::string& sql) {
  if (sqlite3_exec(handle(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

// The first column of the first row.
std::string SqliteDatabase::first(const std::string& query) {
  std::string text;
  const auto keep = [](void* target, int, char** values, char**) {
    *static_cast<std::string*>(target) = values[0] == nullptr ? "" : values[0];
    return 0;
  };
  if (sqlite3_exec(handle(), query.c_str(), keep, &text, nullptr) != SQLITE_OK) fail();
  return text;
}

void SqliteDatabase::fail() const {
  switch (sqlite3_errcode(handle()) & 0xff) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR:  // its tables are not those of its version
      throw Damaged{sqlite3_errmsg(handle())};
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      throw Error(describe(m_name, "is in use by another host"));
    default:
      throw Error(describe(m_name, "cannot be written: " + message()));
  }
}

}  // namespace host
