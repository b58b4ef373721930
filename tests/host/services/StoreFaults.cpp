#include "host/services/StoreFaults.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace host {
namespace {

std::atomic<std::size_t> g_syncs{0};
std::atomic<std::size_t> g_folderSyncs{0};
std::atomic<bool> g_syncsFail{false};
bool g_renamesFail = false;
std::size_t g_sizeAtRename = 0;
std::size_t g_syncsAtRename = 0;
int g_writeError = 0;

ssize_t refuseWrite(int, const void*, size_t) {
  errno = g_writeError;
  return -1;
}

ssize_t refuseWriteAt(int, const void*, size_t, off_t) {
  errno = g_writeError;
  return -1;
}

int g_readsToFailure = 0;

bool readFails() {
  return --g_readsToFailure == 0;
}

ssize_t readOrFail(int file, void* bytes, size_t count) {
  if (!readFails()) return ::read(file, bytes, count);
  errno = EIO;
  return -1;
}

ssize_t readAtOrFail(int file, void* bytes, size_t count, off_t offset) {
  if (!readFails()) return ::pread(file, bytes, count, offset);
  errno = EIO;
  return -1;
}

int g_allocationsToFailure = 0;
sqlite3_mem_methods g_memory{};

void* allocateOrFail(int size) {
  return --g_allocationsToFailure == 0 ? nullptr : g_memory.xMalloc(size);
}

void* reallocateOrFail(void* old, int size) {
  return --g_allocationsToFailure == 0 ? nullptr : g_memory.xRealloc(old, size);
}

// SQLite takes other functions only before its first use.
const int kAllocatorReplaced = [] {
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_memory);
  sqlite3_mem_methods failing = g_memory;
  failing.xMalloc = allocateOrFail;
  failing.xRealloc = reallocateOrFail;
  return sqlite3_config(SQLITE_CONFIG_MALLOC, &failing);
}();

// Null restores the real call.
void replace(const char* call, sqlite3_syscall_ptr function) {
  sqlite3_vfs* const vfs = sqlite3_vfs_find(nullptr);
  vfs->xSetSystemCall(vfs, call, function);
}

int sync(long call, int file) {
  ++g_syncs;
  struct stat status {};
  if (::fstat(file, &status) == 0 && S_ISDIR(status.st_mode)) ++g_folderSyncs;
  if (!g_syncsFail) return static_cast<int>(::syscall(call, file));
  errno = EIO;
  return -1;
}

int renameWatched(const char* from, const char* to) {
  struct stat status {};
  if (::stat(from, &status) == 0) g_sizeAtRename = static_cast<std::size_t>(status.st_size);
  g_syncsAtRename = g_syncs;
  if (!g_renamesFail)
    return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
  errno = EIO;
  return -1;
}

}  // namespace

std::size_t takeSyncs() {
  return g_syncs.exchange(0);
}

std::size_t takeFolderSyncs() {
  return g_folderSyncs.exchange(0);
}

FailingWrites::FailingWrites(int error) {
  g_writeError = error;
  replace("write", reinterpret_cast<sqlite3_syscall_ptr>(refuseWrite));
  replace("pwrite", reinterpret_cast<sqlite3_syscall_ptr>(refuseWriteAt));
  replace("pwrite64", reinterpret_cast<sqlite3_syscall_ptr>(refuseWriteAt));
}

FailingWrites::~FailingWrites() {
  for (const char* const call : {"write", "pwrite", "pwrite64"}) replace(call, nullptr);
}

FailingRead::FailingRead(int nth) {
  g_readsToFailure = nth;
  replace("read", reinterpret_cast<sqlite3_syscall_ptr>(readOrFail));
  replace("pread", reinterpret_cast<sqlite3_syscall_ptr>(readAtOrFail));
  replace("pread64", reinterpret_cast<sqlite3_syscall_ptr>(readAtOrFail));
}

FailingRead::~FailingRead() {
  for (const char* const call : {"read", "pread", "pread64"}) replace(call, nullptr);
}

bool FailingRead::failed() {
  return g_readsToFailure <= 0;
}

FailingAllocation::FailingAllocation(int nth) {
  g_allocationsToFailure = nth;
}

FailingAllocation::~FailingAllocation() {
  g_allocationsToFailure = 0;
}

bool FailingAllocation::failed() {
  return g_allocationsToFailure <= 0;
}

WatchedRename::WatchedRename(bool fails) {
  g_renamesFail = fails;
  g_sizeAtRename = g_syncsAtRename = g_syncs = 0;
}

WatchedRename::~WatchedRename() {
  g_renamesFail = false;
}

std::size_t WatchedRename::size() {
  return g_sizeAtRename;
}

std::size_t WatchedRename::syncs() {
  return g_syncsAtRename;
}

FailingSyncs::FailingSyncs() {
  g_syncsFail = true;
}

FailingSyncs::~FailingSyncs() {
  g_syncsFail = false;
}

}  // namespace host

// SQLite's library finds these before the C library's: the program exports its symbols.
extern "C" int fsync(int file) {
  return host::sync(SYS_fsync, file);
}
extern "C" int fdatasync(int file) {
  return host::sync(SYS_fdatasync, file);
}
extern "C" int rename(const char* from, const char* to) noexcept {
  return host::renameWatched(from, to);
}
