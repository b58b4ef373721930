#include "runtime/ReportPipe.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "clock/DeviceRoot.h"
#include "runtime/Error.h"
#include "runtime/StartThread.h"

namespace host {
namespace {

constexpr const char* kName = "waker of the report listener";

// A listener may come to its wait a moment after it was told to end.
constexpr std::chrono::milliseconds kBetweenWakes{2};

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw Error("the pipe of the time reports: " + path + ": " + what);
}

[[noreturn]] void failWithReason(const std::string& path) {
  fail(path, std::strerror(errno));
}

struct stat statusOf(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) failWithReason(path);
  return status;
}

// Everything on the way is made where it is missing.
void makeParents(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(folder).parent_path(), error);
  if (error) fail(folder, error.message());
}

// The folder itself, not what a link leads to; and its mode, which an earlier umask may have left
// wider, for us alone.
void takeFolder(const std::string& folder) {
  if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) failWithReason(folder);
  const struct stat status = statusOf(folder);
  if (!S_ISDIR(status.st_mode)) fail(folder, "is not a folder");
  if (status.st_uid != geteuid()) fail(folder, "belongs to somebody else; remove it");
  if (chmod(folder.c_str(), 0700) != 0) failWithReason(folder);
}

void takePipe(const std::string& path) {
  if (mkfifo(path.c_str(), 0600) != 0 && errno != EEXIST) failWithReason(path);
  const struct stat status = statusOf(path);
  if (!S_ISFIFO(status.st_mode)) fail(path, "is not a named pipe; remove it");
  if (status.st_uid != geteuid()) fail(path, "belongs to somebody else; remove it");
  if (chmod(path.c_str(), 0600) != 0) failWithReason(path);
}

bool isPipe(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

// Nothing happens when nobody waits: the open fails then.
void wake(const std::string& path, int flags) {
  const int pipe = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | flags);
  if (pipe < 0) return;
  constexpr std::array<char, 4> kNoTime{};
  if (isPipe(pipe) && write(pipe, kNoTime.data(), kNoTime.size()) < 0) {
    // Full or left: then there is something to read, or nobody to wake.
  }
  close(pipe);
}

}  // namespace

ReportPipe::ReportPipe() : m_path(hostPath(kDevicePath)) {
  const std::string folder = hostPath(kDeviceFolder);
  makeParents(folder);
  takeFolder(folder);
  takePipe(m_path);
  m_held.reset(open(m_path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!m_held.valid()) failWithReason(m_path);
}

std::string ReportPipe::heldPath() const {
  return "/proc/self/fd/" + std::to_string(m_held.get());
}

ListenerWaker::ListenerWaker(std::string path)
    : m_path(std::move(path)), m_thread(startThread(kName, [this] { work(); })) {}

ListenerWaker::ListenerWaker(const ReportPipe& pipe)
    : m_path(pipe.path()),
      m_heldPath(pipe.heldPath()),
      m_thread(startThread(kName, [this] { work(); })) {}

ListenerWaker::~ListenerWaker() {
  {
    const std::lock_guard lock(m_mutex);
    m_ending = true;
  }
  m_changed.notify_all();
  m_thread.join();
}

void ListenerWaker::begin() {
  {
    const std::lock_guard lock(m_mutex);
    m_begun = true;
  }
  m_changed.notify_all();
}

// A listener may leave between our open and our write. That is no reason for the process to end:
// the thread does not hear signals.
void ListenerWaker::work() {
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_begun || m_ending; });
  if (!m_begun) return;
  do {
    lock.unlock();
    wake(m_path, O_NOFOLLOW);
    if (!m_heldPath.empty()) wake(m_heldPath, 0);  // a link by its nature
    lock.lock();
    m_changed.wait_for(lock, kBetweenWakes, [this] { return m_ending; });
  } while (!m_ending);
}

}  // namespace host
