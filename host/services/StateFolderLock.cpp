#include "services/StateFolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "Logging.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "framework/OwnerOnly.h"
#include "services/SettingsDatabase.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// How long to wait for a previous host that is still ending.
constexpr std::chrono::milliseconds kPatience{500};
constexpr std::chrono::milliseconds kPause{10};

std::string named(const fs::path& folder) {
  return "state folder \"" + folder.string() + "\"";
}

void requireWritable(const fs::path& folder) {
  std::error_code code;
  if (!fs::is_directory(folder, code)) throw Error(named(folder) + " is not a folder");
  if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0) return;
  if (errno == EROFS || errno == EACCES)
    throw Error("state folder is read-only: " + folder.string());
  throw Error(named(folder) + " cannot be used: " + std::strerror(errno));
}

// The lock file is created before this is called.
bool holdsOnlyTheLock(const fs::path& folder) {
  std::error_code code;
  fs::directory_iterator entry(folder, code);
  for (; !code && entry != fs::directory_iterator(); entry.increment(code)) {
    if (entry->path().filename() != StateFolderLock::kFileName) return false;
  }
  return !code;
}

// A sticky bit means that the folder is shared; other files mean that it has another use.
bool belongsToTheHost(const fs::path& folder, mode_t mode) {
  std::error_code code;
  if ((mode & S_ISVTX) != 0) return false;
  return fs::exists(folder / SettingsDatabase::kFileName, code) || holdsOnlyTheLock(folder);
}

void closeToOthers(const fs::path& folder) {
  struct stat found {};
  if (::stat(folder.c_str(), &found) != 0 || (found.st_mode & (S_IRWXG | S_IRWXO)) == 0) return;
  if (belongsToTheHost(folder, found.st_mode)) return tighten(folder, S_IRWXU);
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
            "%s is open to others (mode %04o) and contains other files: its mode is kept",
            named(folder).c_str(), static_cast<unsigned>(found.st_mode & kModeBits));
}

Descriptor openLock(const fs::path& folder) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const fs::path file = folder / StateFolderLock::kFileName;
  Descriptor descriptor(::open(file.c_str(), kFlags, S_IRUSR | S_IWUSR));
  if (descriptor.valid()) return descriptor;
  throw Error(named(folder) + " cannot be locked: " + file.string() + ": " + std::strerror(errno));
}

bool lock(int file) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return false;
    if (std::chrono::steady_clock::now() >= deadline) {
      errno = EWOULDBLOCK;
      return false;
    }
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

}  // namespace

StateFolderLock::StateFolderLock(const fs::path& folder) {
  makeOwnFolder(folder);
  requireWritable(folder);
  m_file = openLock(folder);
  if (!lock(m_file.get())) {
    throw Error(named(folder) + (errno == EWOULDBLOCK
                                     ? " is in use by another host"
                                     : std::string(" cannot be locked: ") + std::strerror(errno)));
  }
  closeToOthers(folder);
}

}  // namespace host
