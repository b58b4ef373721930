// The counting allocator. The program exports these, so that plug-in and C++ library use them too.
#include "HeapCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace bench {
namespace {

std::atomic<std::size_t> g_allocations{0};

}  // namespace

HeapCount::HeapCount() : m_before(g_allocations) {}

std::size_t HeapCount::allocations() const {
  return g_allocations - m_before;
}

}  // namespace bench

void* operator new(std::size_t size) {
  bench::g_allocations.fetch_add(1, std::memory_order_relaxed);
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
