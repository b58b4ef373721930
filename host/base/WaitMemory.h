#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <new>

namespace host {

// Preallocated memory for one object at a time, usually an asynchronous wait on the loop, which can
// be restarted when memory has run out. Owner: shared by the waiter and its operations. Thread: the
// loop's, or another one that starts a wait while none is pending.
class WaitMemory {
 public:
  // An operation that is larger, or a second one at the same time, gets heap memory.
  void* take(std::size_t size) {
    if (m_taken || size > m_buffer.size()) return ::operator new(size);
    m_taken = true;
    return m_buffer.data();
  }

  void giveBack(void* place) {
    if (place != m_buffer.data()) return ::operator delete(place);
    m_taken = false;
  }

 private:
  static constexpr std::size_t kSize = 256;  // bytes; an operation takes about half of it
  alignas(std::max_align_t) std::array<std::byte, kSize> m_buffer;
  bool m_taken = false;
};

// The associated allocator of a handler with a WaitMemory.
template <class T>
struct WaitAllocator {
  using value_type = T;

  explicit WaitAllocator(std::shared_ptr<WaitMemory> owner) : memory(std::move(owner)) {}
  // Allocators are converted implicitly.
  template <class Other>
  WaitAllocator(const WaitAllocator<Other>& other)  // NOLINT(google-explicit-constructor)
      : memory(other.memory) {}

  T* allocate(std::size_t count) { return static_cast<T*>(memory->take(count * sizeof(T))); }
  void deallocate(T* place, std::size_t) { memory->giveBack(place); }
  bool operator==(const WaitAllocator& other) const = default;

  std::shared_ptr<WaitMemory> memory;
};

// Calls `handler`; the operation before it uses `memory`.
template <class Handler>
struct WaitHandler {
  using allocator_type = WaitAllocator<std::byte>;

  [[nodiscard]] allocator_type get_allocator() const { return allocator_type(memory); }
  template <class... Result>
  void operator()(const Result&... result) {
    handler(result...);
  }

  // Constant, so that a move copies it: asio moves the handler into its operation, and uses the old
  // handler's allocator if the operation cannot start.
  const std::shared_ptr<WaitMemory> memory;
  Handler handler;
};

template <class Handler>
WaitHandler(std::shared_ptr<WaitMemory>, Handler) -> WaitHandler<Handler>;

}  // namespace host
