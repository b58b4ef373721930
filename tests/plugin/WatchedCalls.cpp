#include "plugin/WatchedCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>

namespace {

constexpr std::size_t kMessageSize = 4;

std::mutex g_mutex;
std::set<unsigned int> g_sleeps;    // guarded by g_mutex
std::function<void()> g_afterStat;  // guarded by g_mutex
std::atomic<int> g_closes{0};
std::atomic<int> g_opensWithoutNoctty{0};
std::atomic<int> g_readError{0};
std::atomic<bool> g_endlessReads{false};
std::atomic<std::size_t> g_mostDropped{0};
std::atomic<int> g_failedStopWrites{0};

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
unsigned int __wrap_sleep(unsigned int seconds);
int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...);
int __real_close(int descriptor);
int __wrap_close(int descriptor);
ssize_t __real_read(int descriptor, void* buffer, size_t size);
ssize_t __wrap_read(int descriptor, void* buffer, size_t size);
ssize_t __real_write(int descriptor, const void* buffer, size_t size);
ssize_t __wrap_write(int descriptor, const void* buffer, size_t size);
int __real_stat(const char* path, struct stat* status);
int __wrap_stat(const char* path, struct stat* status);
bool __real__Z15loggingOnAppUniPKci(const char* component, int level);
bool __wrap__Z15loggingOnAppUniPKci(const char* component, int level);

unsigned int __wrap_sleep(unsigned int seconds) {
  {
    const std::lock_guard guard(g_mutex);
    g_sleeps.insert(seconds);
  }
  std::this_thread::yield();
  return 0;
}

int __wrap_open(const char* path, int flags, ...) {
  if ((flags & O_ACCMODE) == O_RDONLY && (flags & O_NOCTTY) == 0) ++g_opensWithoutNoctty;
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return __real_open(path, flags, mode);
}

int __wrap_close(int descriptor) {
  const int result = __real_close(descriptor);
  ++g_closes;
  return result;
}

ssize_t __wrap_read(int descriptor, void* buffer, size_t size) {
  thread_local std::size_t dropped = 0;  // since the last message
  dropped = size > kMessageSize ? dropped + size : 0;
  if (size > kMessageSize && g_endlessReads) {
    g_mostDropped = std::max<std::size_t>(g_mostDropped, dropped);
    return static_cast<ssize_t>(size);
  }
  const ssize_t count = __real_read(descriptor, buffer, size);
  if (size != kMessageSize || g_readError == 0) return count;
  errno = g_readError;
  return -1;
}

ssize_t __wrap_write(int descriptor, const void* buffer, size_t size) {
  const ssize_t count = __real_write(descriptor, buffer, size);
  const bool stops = size == kMessageSize && std::memcmp(buffer, "\0\0\0", kMessageSize) == 0;
  if (stops && count < 0 && errno == EBADF) ++g_failedStopWrites;
  return count;
}

int __wrap_stat(const char* path, struct stat* status) {
  const int result = __real_stat(path, status);
  const int error = errno;
  std::function<void()> call;
  {
    const std::lock_guard guard(g_mutex);
    call = g_afterStat;
  }
  if (call) call();
  errno = error;
  return result;
}

bool __wrap__Z15loggingOnAppUniPKci(const char* component, int level) {
  const bool on = __real__Z15loggingOnAppUniPKci(component, level);
  errno = EDOM;
  return on;
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace plugin {

void resetCalls() {
  const std::lock_guard guard(g_mutex);
  g_sleeps.clear();
  g_afterStat = nullptr;
  g_closes = 0;
  g_opensWithoutNoctty = 0;
  g_readError = 0;
  g_endlessReads = false;
  g_mostDropped = 0;
  g_failedStopWrites = 0;
}

std::set<unsigned int> sleeps() {
  const std::lock_guard guard(g_mutex);
  return g_sleeps;
}

int closes() {
  return g_closes;
}

int failedStopWrites() {
  return g_failedStopWrites;
}

int opensWithoutNoctty() {
  return g_opensWithoutNoctty;
}

void awaitCloses(int count) {
  while (g_closes < count) std::this_thread::yield();
}

void failReads(int error) {
  g_readError = error;
}

void makeReadsEndless() {
  g_endlessReads = true;
}

std::size_t mostDropped() {
  return g_mostDropped;
}

void afterStat(std::function<void()> call) {
  const std::lock_guard guard(g_mutex);
  g_afterStat = std::move(call);
}

}  // namespace plugin
