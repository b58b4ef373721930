#include "framework/MemoryReserve.h"

#include <atomic>
#include <new>
#include <utility>

#include "Logging.h"
#include "base/LogLevels.h"
#include "base/Mutex.h"

namespace host {
namespace {

constinit Mutex g_reserveMutex;
constinit void* g_reserve CLOCK_GUARDED_BY(g_reserveMutex) = nullptr;
constinit unsigned g_uses CLOCK_GUARDED_BY(g_reserveMutex) = 0;
constinit std::atomic<bool> g_used{false};

thread_local unsigned t_usesSeen = 0;
thread_local bool t_refilling = false;

// The new-handler: operator new calls it when there is no memory, and then tries again. If another
// thread has used the reserve since this one last looked, there may be memory again.
void useReserve() {
  if (t_refilling) throw std::bad_alloc();
  const MutexLock lock(g_reserveMutex);
  if (std::exchange(t_usesSeen, g_uses) != g_uses) return;
  if (g_reserve == nullptr) throw std::bad_alloc();
  t_usesSeen = ++g_uses;
  g_used = true;
  ::operator delete(std::exchange(g_reserve, nullptr));
}

void* newReserve() {
  t_refilling = true;
  void* const reserve = ::operator new(MemoryReserve::kSize, std::nothrow);
  t_refilling = false;
  return reserve;
}

}  // namespace

MemoryReserve::MemoryReserve() {
  const MutexLock lock(g_reserveMutex);
  g_reserve = ::operator new(kSize);
  std::set_new_handler(useReserve);
}

MemoryReserve::~MemoryReserve() {
  const MutexLock lock(g_reserveMutex);
  std::set_new_handler(nullptr);
  ::operator delete(std::exchange(g_reserve, nullptr));
  g_used = false;
}

bool MemoryReserve::refill() {
  if (!g_used) return true;
  {
    // Locked until the reserve, perhaps the last memory, is in place for other threads.
    const MutexLock lock(g_reserveMutex);
    void* const reserve = newReserve();
    if (reserve == nullptr) return false;
    g_used = false;
    ::operator delete(std::exchange(g_reserve, reserve));
  }
  logAppUni("clockhost", kLogError, __FILE__, __LINE__, "out of memory: the reserve was used");
  return true;
}

}  // namespace host
