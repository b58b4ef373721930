// Replaces calls of the C library in the host under test. A call that must not fail goes straight
// to the system.
#include "faults/FailingCalls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstdlib>
#include <string_view>

#include "support/Sanitizers.h"

namespace faults {
namespace {

std::atomic<Plan*> g_plan{nullptr};

// Before main: the calls that come earlier are the loader's and those of static initialisers.
__attribute__((constructor)) void readPlan() {
  const char* const file = std::getenv(kPlanVariable);
  if (file == nullptr) return;
  const long descriptor = ::syscall(SYS_openat, AT_FDCWD, file, O_RDWR | O_CLOEXEC);
  if (descriptor < 0) return;
  void* const memory = ::mmap(nullptr, sizeof(Plan), PROT_READ | PROT_WRITE, MAP_SHARED,
                              static_cast<int>(descriptor), 0);
  ::syscall(SYS_close, descriptor);
  if (memory != MAP_FAILED) g_plan = static_cast<Plan*>(memory);
}

Call plannedCall() {
  Plan* const plan = g_plan;
  return plan == nullptr ? Call::none : plan->call.load();
}

// A kind of file, recognised by a part of its path, and how the calls on it count.
struct FileKind {
  std::string_view part;
  Call open;
  Call read;
  Call write;
  Call sync;
};

constexpr std::array<FileKind, 3> kKinds = {{
    {".db", Call::storeOpen, Call::storeRead, Call::storeWrite, Call::storeSync},
    {"setupTZ.sh", Call::scriptOpen, Call::none, Call::scriptWrite, Call::scriptSync},
    {"/ipc/ntpclient", Call::pipeOpen, Call::pipeRead, Call::none, Call::none},
}};

using Column = Call FileKind::*;

bool failsOn(std::string_view path, Column column) {
  const Call planned = plannedCall();
  if (planned == Call::none) return false;
  for (const FileKind& kind : kKinds) {
    const bool meant = kind.*column == planned && path.find(kind.part) != std::string_view::npos;
    if (meant) return fails(planned);
  }
  return false;
}

constexpr std::string_view kDescriptors = "/proc/self/fd/";

// The path that a link in /proc refers to; empty when it cannot be read.
std::string_view readLink(const char* link, std::array<char, 4096>& path) {
  const long size = ::syscall(SYS_readlinkat, AT_FDCWD, link, path.data(), path.size());
  return {path.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

bool failsOn(int descriptor, Column column) {
  if (plannedCall() == Call::none) return false;
  std::array<char, 32> link{};  // with a zero at its end
  const std::size_t size = kDescriptors.copy(link.data(), link.size());
  std::to_chars(link.begin() + size, link.end() - 1, descriptor);
  std::array<char, 4096> path;
  return failsOn(readLink(link.data(), path), column);
}

// The host opens the pipe for writing to wake its reader, and repeats that until it succeeds. Such
// a failure has no effect.
bool isWake(std::string_view path, int flags) {
  return (flags & O_ACCMODE) == O_WRONLY && path.find("/ipc/") != std::string_view::npos;
}

// A non-blocking read only discards the rest of an opening of the pipe. Its failure has no effect.
bool isDropped(int descriptor) {
  return (::fcntl(descriptor, F_GETFL) & O_NONBLOCK) != 0;
}

// The host opens its pipe through a descriptor in /proc.
int openFile(const char* path, int flags, mode_t mode) {
  std::array<char, 4096> target;
  std::string_view name = path == nullptr ? "" : path;
  if (name.starts_with(kDescriptors)) name = readLink(path, target);
  if (!isWake(name, flags) && failsOn(name, &FileKind::open)) return -1;
  return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

// An accept without a waiting client fails anyway, so it is not counted.
bool hasWaitingClient(int listener) {
  pollfd asked{listener, POLLIN, 0};
  return ::poll(&asked, 1, 0) == 1;
}

// The first thread under the thread sanitizer is its own.
bool isTheSanitizers() {
  static std::atomic<bool> first{support::kThreadSanitizer};
  return first.exchange(false);
}

// The argument after the flags of an open.
mode_t modeAfter(int flags, va_list rest) {
  const bool hasMode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
  return hasMode ? va_arg(rest, mode_t) : 0;
}

template <class Function>
Function* next(const char* name) {
  void* const found = ::dlsym(RTLD_NEXT, name);
  return reinterpret_cast<Function*>(found);
}

}  // namespace

bool isPlanned(Call call) noexcept {
  return plannedCall() == call;
}

bool fails(Call call) noexcept {
  if (!isPlanned(call)) return false;
  Plan* const plan = g_plan;
  if (plan->seen.fetch_add(1) + 1 != plan->nth.load()) return false;
  errno = plannedError();
  return true;
}

int plannedError() noexcept {
  Plan* const plan = g_plan;
  return plan == nullptr ? 0 : static_cast<int>(plan->error.load());
}

}  // namespace faults

using faults::Call;
using faults::FileKind;

extern "C" {

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = faults::modeAfter(flags, rest);
  va_end(rest);
  return faults::openFile(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = faults::modeAfter(flags, rest);
  va_end(rest);
  return faults::openFile(path, flags | O_LARGEFILE, mode);
}

ssize_t read(int descriptor, void* bytes, size_t count) {
  if (!faults::isDropped(descriptor) && faults::failsOn(descriptor, &FileKind::read)) return -1;
  return ::syscall(SYS_read, descriptor, bytes, count);
}

ssize_t pread64(int descriptor, void* bytes, size_t count, off64_t offset) {
  if (faults::failsOn(descriptor, &FileKind::read)) return -1;
  return ::syscall(SYS_pread64, descriptor, bytes, count, offset);
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
  if (faults::failsOn(descriptor, &FileKind::write)) return -1;
  return ::syscall(SYS_write, descriptor, bytes, count);
}

ssize_t pwrite64(int descriptor, const void* bytes, size_t count, off64_t offset) {
  if (faults::failsOn(descriptor, &FileKind::write)) return -1;
  return ::syscall(SYS_pwrite64, descriptor, bytes, count, offset);
}

int fsync(int descriptor) {
  if (faults::failsOn(descriptor, &FileKind::sync)) return -1;
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

int fdatasync(int descriptor) {
  if (faults::failsOn(descriptor, &FileKind::sync)) return -1;
  return static_cast<int>(::syscall(SYS_fdatasync, descriptor));
}

int rename(const char* from, const char* to) noexcept {
  const bool script = std::string_view(to).find("setupTZ.sh") != std::string_view::npos;
  if (script && faults::fails(Call::scriptRename)) return -1;
  return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

int accept4(int socket, struct sockaddr* address, socklen_t* size, int flags) {
  if (faults::hasWaitingClient(socket) && faults::fails(Call::accept)) return -1;
  return static_cast<int>(::syscall(SYS_accept4, socket, address, size, flags));
}

ssize_t send(int socket, const void* bytes, size_t count, int flags) {
  if (faults::fails(Call::send)) return -1;
  return ::syscall(SYS_sendto, socket, bytes, count, flags, nullptr, 0);
}

// Skips the pause after a failed open or read of the pipe.
unsigned int sleep(unsigned int) {
  return 0;
}

// Resolves localhost without the machine's hosts file and name server.
int getaddrinfo(const char* name, const char* service, const addrinfo* wanted, addrinfo** found) {
  static const auto real = faults::next<decltype(getaddrinfo)>("getaddrinfo");
  const bool local = std::string_view(name) == "localhost";
  return real(local ? "127.0.0.1" : name, service, wanted, found);
}

// The next two return the error number.
int posix_spawn(pid_t* id, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const arguments[],
                char* const environment[]) {
  if (faults::fails(Call::spawn)) return errno;
  static const auto real = faults::next<decltype(posix_spawn)>("posix_spawn");
  return real(id, path, actions, attributes, arguments, environment);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) noexcept {
  if (!faults::isTheSanitizers() && faults::fails(Call::threadCreation)) return errno;
  static const auto real = faults::next<decltype(pthread_create)>("pthread_create");
  return real(thread, attributes, body, argument);
}

}  // extern "C"
