#include "framework/MemoryReserve.h"

#include <atomic>
#include <new>

#include "Logging.h"

namespace host {
namespace {

constinit std::atomic<void*> g_reserve{nullptr};

// operator new calls this when it finds no memory, and tries again when it returns.
void releaseReserve() {
  void* const reserve = g_reserve.exchange(nullptr);
  if (reserve == nullptr) throw std::bad_alloc();
  ::operator delete(reserve);
}

}  // namespace

MemoryReserve::MemoryReserve() {
  g_reserve = ::operator new(kSize);
  std::set_new_handler(releaseReserve);
}

MemoryReserve::~MemoryReserve() {
  std::set_new_handler(nullptr);
  ::operator delete(g_reserve.exchange(nullptr));
}

bool MemoryReserve::refill() {
  if (g_reserve != nullptr || std::get_new_handler() != releaseReserve) return true;
  void* const reserve = ::operator new(kSize, std::nothrow);
  if (reserve == nullptr) return false;
  g_reserve = reserve;
  logAppUni("clockhost", 2, __FILE__, __LINE__, "memory was short: the reserve had to be used");
  return true;
}

}  // namespace host
