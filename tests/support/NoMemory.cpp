#include "support/NoMemory.h"

#include <cstdlib>
#include <new>

namespace support {
namespace {

thread_local bool t_short = false;
thread_local bool t_ranOut = false;
thread_local std::size_t t_left = 0;

bool mayAllocate() {
  if (!t_short) return true;
  if (t_left == 0) t_ranOut = true;
  return t_left != 0 && t_left-- != 0;
}

}  // namespace

NoMemory::NoMemory(std::size_t after) {
  t_left = after;
  t_ranOut = false;
  t_short = true;
}

NoMemory::~NoMemory() {
  t_short = false;
}

bool NoMemory::ranOut() {
  return t_ranOut;
}

}  // namespace support

#ifdef NO_MEMORY_BY_THE_LINKER

// operator new as the linker (--wrap) lets the objects of the program call it. The shared libraries
// keep theirs.
extern "C" {
void* __real__Znwm(std::size_t size);  // NOLINT(*-reserved-identifier, *-identifier-naming)

void* __wrap__Znwm(std::size_t size) {  // NOLINT(*-reserved-identifier, *-identifier-naming)
  if (!support::mayAllocate()) throw std::bad_alloc();
  return __real__Znwm(size);
}
}

#else

void* operator new(std::size_t size) {
  void* const memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

// Of its own: a sanitizer's would not go with this operator delete.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return support::mayAllocate() ? std::malloc(size == 0 ? 1 : size) : nullptr;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

#endif
