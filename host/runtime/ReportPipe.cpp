#include "runtime/ReportPipe.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <limits>
#include <utility>

#include "Logging.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "interpose/DeviceRoot.h"
#include "runtime/TrustedFolder.h"

namespace host {
namespace {

constexpr const char* kWhat = "report pipe: ";

// How many missing folders are created. While the host runs, only the device root and its tmp and
// votk: a removed state folder must not come back as an empty one.
constexpr std::size_t kAllFolders = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kWhileRunning = 3;

constexpr mode_t kFolderMode = 0700;
constexpr mode_t kPipeMode = 0600;

// Watched on each folder of the path, and in addition on the folder that contains the pipe.
constexpr std::uint32_t kChangesOfAFolder = IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t kChangesInTheFolder = IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw Error(kWhat + path + " " + what);
}

[[noreturn]] void failWithReason(const std::string& path) {
  throw Error(kWhat + path + ": " + std::strerror(errno));
}

struct stat statusOf(const Descriptor& file, const std::string& path) {
  struct stat status {};
  if (fstat(file.get(), &status) != 0) failWithReason(path);
  return status;
}

bool areSame(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace

ReportPipe::ReportPipe()
    : m_folderPath(hostPath(kDeviceFolder)), m_path(hostPath(kReportPipePath)) {
  m_pipe = acquire();
  setReportPipe(m_pipe.get());
}

ReportPipe::~ReportPipe() {
  dropReportPipe(m_pipe.get());
}

std::string ReportPipe::heldPath() const {
  return "/proc/self/fd/" + std::to_string(m_pipe.get());
}

// Each folder is watched before its contents are inspected, so that no change is missed.
Descriptor ReportPipe::acquire() {
  std::set<int> before = std::exchange(m_watches, {});
  Descriptor pipe;
  try {
    pipe = openAll();
  } catch (...) {
    m_watches.merge(before);
    throw;
  }
  removeUnusedWatches(before);
  return pipe;
}

Descriptor ReportPipe::openAll() {
  const Descriptor parent = openParent();
  Descriptor folder = openFolder(parent);
  watchFolder(folder.get(), kChangesOfAFolder | kChangesInTheFolder);
  lock(std::move(folder));
  return openPipe();
}

Descriptor ReportPipe::openParent() try {
  return openTrustedFolder(std::filesystem::path(m_folderPath).parent_path(),
                           m_pipe.valid() ? kWhileRunning : kAllFolders,
                           [this](int folder) { watchFolder(folder, kChangesOfAFolder); });
} catch (const Error& error) {
  throw Error(std::string(kWhat) + error.what());
}

// Does not follow a link. Tightens the mode, in case another program created the folder.
Descriptor ReportPipe::openFolder(const Descriptor& parent) const {
  const std::string name = std::filesystem::path(m_folderPath).filename();
  if (mkdirat(parent.get(), name.c_str(), kFolderMode) != 0 && errno != EEXIST) {
    failWithReason(m_folderPath);
  }
  Descriptor folder(
      openat(parent.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder.valid() && (errno == ENOTDIR || errno == ELOOP))
    fail(m_folderPath, "is not a folder");
  if (!folder.valid()) failWithReason(m_folderPath);
  if (statusOf(folder, m_folderPath).st_uid != geteuid()) {
    fail(m_folderPath, "belongs to another user; remove it");
  }
  if (fchmod(folder.get(), kFolderMode) != 0) failWithReason(m_folderPath);
  return folder;
}

// Locks the folder and not the pipe, because opening the pipe would make the host a reader of it.
void ReportPipe::lock(Descriptor folder) {
  const bool isLocked = m_lockedFolder.valid() && areSame(statusOf(m_lockedFolder, m_folderPath),
                                                          statusOf(folder, m_folderPath));
  if (isLocked) return;
  if (flock(folder.get(), LOCK_EX | LOCK_NB) == 0) {
    m_lockedFolder = std::move(folder);
  } else if (errno == EWOULDBLOCK) {
    fail(m_path, "is in use by another host; give each host its own --device-root");
  } else {
    failWithReason(m_folderPath);
  }
}

Descriptor ReportPipe::openPipe() const {
  const std::string name = std::filesystem::path(m_path).filename();
  if (mkfifoat(m_lockedFolder.get(), name.c_str(), kPipeMode) != 0 && errno != EEXIST) {
    failWithReason(m_path);
  }
  Descriptor pipe(openat(m_lockedFolder.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!pipe.valid()) failWithReason(m_path);
  const struct stat status = statusOf(pipe, m_path);
  if (!S_ISFIFO(status.st_mode)) fail(m_path, "is not a named pipe; remove it");
  if (status.st_uid != geteuid()) fail(m_path, "belongs to another user; remove it");
  if (fchmodat(m_lockedFolder.get(), name.c_str(), kPipeMode, 0) != 0) failWithReason(m_path);
  return pipe;
}

int ReportPipe::watch() {
  m_inotify.reset(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (!m_inotify.valid()) failWithReason(m_path);
  replace();
  return m_inotify.get();
}

void ReportPipe::restore() try {
  discardEvents();
  struct stat found {};
  const bool isThere = lstat(m_path.c_str(), &found) == 0;
  if (isThere && areSame(found, statusOf(m_pipe, m_path))) return;
  replace();
} catch (const std::exception& error) {
  logAppUni("clockhost", kLogError, __FILE__, __LINE__,
            "the report pipe was deleted or replaced, and is not recreated: %s", error.what());
}

// Takes the pipe at the path, or creates it, and moves the listener over to it.
void ReportPipe::replace() {
  const Descriptor pipe = acquire();
  if (areSame(statusOf(pipe, m_path), statusOf(m_pipe, m_path))) return;
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
            "%s%s was deleted or replaced; it is recreated", kWhat, m_path.c_str());
  // Kept open with four zero bytes in it, so that a listener that opens it late does not block.
  m_replaced.reset(open(heldPath().c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  if (!m_replaced.valid()) failWithReason(m_path + ": cannot wake its listener");
  if (dup3(pipe.get(), m_pipe.get(), O_CLOEXEC) < 0) failWithReason(m_path);
  constexpr std::uint32_t kNoTime = 0;
  if (write(m_replaced.get(), &kNoTime, sizeof kNoTime) < 0) {
    // Full: the listener has something to read.
  }
}

void ReportPipe::watchFolder(int folder, std::uint32_t changes) {
  if (!m_inotify.valid()) return;
  const std::string path = "/proc/self/fd/" + std::to_string(folder);
  const int watch = inotify_add_watch(m_inotify.get(), path.c_str(), changes);
  if (watch < 0) failWithReason(m_path + " cannot be watched");
  m_watches.insert(watch);
}

// Keeps the others as they are, because removing a watch is itself an event.
void ReportPipe::removeUnusedWatches(const std::set<int>& before) const {
  for (const int watch : before) {
    if (!m_watches.contains(watch)) inotify_rm_watch(m_inotify.get(), watch);
  }
}

// Their contents do not matter: restore() inspects the pipe itself.
void ReportPipe::discardEvents() const {
  std::array<char, 4096> events;
  while (read(m_inotify.get(), events.data(), events.size()) > 0) {
  }
}

}  // namespace host
