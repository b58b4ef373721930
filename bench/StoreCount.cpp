// The program exports its own syncs, which SQLite's library finds before the C library's.
#include "StoreCount.h"

#include <sqlite3.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

namespace bench {
namespace {

std::atomic<std::size_t> g_syncs{0};
std::atomic<std::size_t> g_transactions{0};

int sync(long call, int file) {
  ++g_syncs;
  return static_cast<int>(::syscall(call, file));
}

int onCommit(void*) {
  ++g_transactions;
  return 0;  // let it happen
}

// SQLite calls it for each new connection.
int watch(sqlite3* database, char**, const void*) {
  sqlite3_commit_hook(database, onCommit, nullptr);
  return SQLITE_OK;
}

}  // namespace

void countTransactions() {
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(watch));
}

StoreCount::StoreCount() : m_syncs(g_syncs), m_transactions(g_transactions) {}

std::size_t StoreCount::syncs() const {
  return g_syncs - m_syncs;
}

std::size_t StoreCount::transactions() const {
  return g_transactions - m_transactions;
}

}  // namespace bench

extern "C" int fsync(int file) {
  return bench::sync(SYS_fsync, file);
}
extern "C" int fdatasync(int file) {
  return bench::sync(SYS_fdatasync, file);
}
