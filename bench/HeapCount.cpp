// The program exports its own ways to the heap, which the plug-in, the C++ library's operator new
// and the C library itself find before the C library's.
#include "HeapCount.h"

#include <cerrno>
#include <cstdlib>

// The C library's own, by the names that it keeps for this.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace bench {
namespace {

constinit thread_local std::size_t t_allocations = 0;

}  // namespace

HeapCount::HeapCount() : m_before(t_allocations) {}

std::size_t HeapCount::allocations() const {
  return t_allocations - m_before;
}

}  // namespace bench

extern "C" {

void* malloc(std::size_t size) {
  ++bench::t_allocations;
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  ++bench::t_allocations;
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  ++bench::t_allocations;
  return __libc_realloc(memory, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
  ++bench::t_allocations;
  return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  void* const found = memalign(alignment, size);
  if (found == nullptr) return ENOMEM;
  *memory = found;
  return 0;
}

}  // extern "C"
