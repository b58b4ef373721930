#include "platform/MemoryReserve.h"

#include <atomic>
#include <new>

#include "Logging.h"

namespace host {
namespace {

std::atomic<void*> g_reserve{nullptr};
std::atomic<bool> g_used{false};

// What operator new calls when there is no memory, before it tries again.
void useReserve() {
  void* const reserve = g_reserve.exchange(nullptr);
  if (reserve == nullptr) throw std::bad_alloc();
  g_used = true;
  ::operator delete(reserve);
}

}  // namespace

MemoryReserve::MemoryReserve() {
  g_reserve = ::operator new(kSize);
  std::set_new_handler(useReserve);
}

MemoryReserve::~MemoryReserve() {
  std::set_new_handler(nullptr);
  ::operator delete(g_reserve.exchange(nullptr));
  g_used = false;
}

bool MemoryReserve::refill() {
  if (!g_used) return true;
  void* const reserve = ::operator new(kSize, std::nothrow);
  if (reserve == nullptr) return false;
  g_used = false;
  ::operator delete(g_reserve.exchange(reserve));
  logAppUni("clockhost", 2, __FILE__, __LINE__, "memory was short: the reserve had to be used");
  return true;
}

}  // namespace host
