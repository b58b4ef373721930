#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <new>

namespace host {

// Room for one operation that waits on the loop, so that the wait can be begun again when there is
// no memory. Owner: shared by who waits and the operations that use it. Thread: the loop's. Another
// one may begin a wait when a flag says that none is pending.
class WaitMemory {
 public:
  // What is larger, or comes while the room is taken, gets memory like everything else.
  void* take(std::size_t size) {
    if (m_taken || size > m_room.size()) return ::operator new(size);
    m_taken = true;
    return m_room.data();
  }

  void giveBack(void* place) {
    if (place != m_room.data()) return ::operator delete(place);
    m_taken = false;
  }

 private:
  static constexpr std::size_t kSize = 256;  // bytes; such an operation takes about half of it
  alignas(std::max_align_t) std::array<std::byte, kSize> m_room;
  bool m_taken = false;
};

// The allocator that a handler with a WaitMemory is associated with.
template <class T>
struct WaitAllocator {
  using value_type = T;

  explicit WaitAllocator(std::shared_ptr<WaitMemory> room) : memory(std::move(room)) {}
  // As allocators are converted.
  template <class Other>
  WaitAllocator(const WaitAllocator<Other>& other)  // NOLINT(google-explicit-constructor)
      : memory(other.memory) {}

  T* allocate(std::size_t count) { return static_cast<T*>(memory->take(count * sizeof(T))); }
  void deallocate(T* place, std::size_t) { memory->giveBack(place); }
  bool operator==(const WaitAllocator& other) const = default;

  std::shared_ptr<WaitMemory> memory;
};

// Calls `handler`, with the memory for the operation that leads to it.
template <class Handler>
struct WaitHandler {
  using allocator_type = WaitAllocator<std::byte>;

  [[nodiscard]] allocator_type get_allocator() const { return allocator_type(memory); }
  template <class... Result>
  void operator()(const Result&... result) {
    handler(result...);
  }

  // Constant, so that a move leaves it: asio moves the handler into its operation, and asks the old
  // one for the allocator when the operation then cannot begin.
  const std::shared_ptr<WaitMemory> memory;
  Handler handler;
};

template <class Handler>
WaitHandler(std::shared_ptr<WaitMemory>, Handler) -> WaitHandler<Handler>;

}  // namespace host
