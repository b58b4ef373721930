// A library to preload: counts the heap allocations of a program's threads in the file that
// BENCH_HEAP_COUNT names, as one std::size_t. operator new calls malloc, so it is counted as well.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

// The C library's own functions, under the names that it exports for replacements of malloc.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

using Count = std::atomic<std::size_t>;

constinit Count g_beforeSharing{0};  // a program allocates before the constructor below runs
constinit std::atomic<Count*> g_count{&g_beforeSharing};

void countOne() {
  g_count.load(std::memory_order_relaxed)->fetch_add(1, std::memory_order_relaxed);
}

__attribute__((constructor)) void shareCount() {
  const char* const name = std::getenv("BENCH_HEAP_COUNT");
  const int file = name == nullptr ? -1 : ::open(name, O_RDWR | O_CLOEXEC);
  if (file < 0) return;
  void* const shared = ::mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  ::close(file);
  if (shared != MAP_FAILED) g_count = static_cast<Count*>(shared);
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
  countOne();
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  countOne();
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  countOne();
  return __libc_realloc(memory, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
  countOne();
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
