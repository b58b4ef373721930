// Memory of the host under test: unlimited until the planned allocation. From then on, until the
// plan is disarmed, no more than was in use at that moment.
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

#include "faults/FailingCalls.h"

namespace {

constexpr std::size_t kPlenty = std::numeric_limits<std::size_t>::max() / 2;

std::atomic<std::size_t> g_inUse{0};
std::atomic<std::size_t> g_limit{kPlenty};

void* allocate(std::size_t size) noexcept {
  if (!faults::isPlanned(faults::Call::memory)) {
    g_limit = kPlenty;
  } else if (faults::fails(faults::Call::memory)) {
    g_limit = faults::plannedError() == faults::kReserveSpent ? 0 : g_inUse.load();
  }
  if (g_inUse + size > g_limit) return nullptr;
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory != nullptr) g_inUse += ::malloc_usable_size(memory);
  return memory;
}

}  // namespace

void* operator new(std::size_t size) {
  for (;;) {
    if (void* const memory = allocate(size)) return memory;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}

// Defined too, as a sanitizer's version would not call the one above.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  g_inUse -= ::malloc_usable_size(memory);
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  ::operator delete(memory);
}
