#pragma once

#include <cstddef>

namespace host {

// Memory reserved for a shortage: the first allocation that fails uses it, so that the host can
// finish the current frame. Cleaning up needs it too: the JSON library allocates while it frees a
// document, and ends the process when it cannot.
// Owner: the process, one at a time. Thread: any. Failure: an allocation that fails between the use
// and refill() throws std::bad_alloc. A thread that has not seen the last use first retries its
// allocation, because the memory of the reserve may be free again.
class MemoryReserve {
 public:
  // Far more than a usual request needs. The system provides its pages only when they are used.
  static constexpr std::size_t kSize = 4UL * 1024 * 1024;

  MemoryReserve();
  ~MemoryReserve();
  MemoryReserve(const MemoryReserve&) = delete;
  MemoryReserve& operator=(const MemoryReserve&) = delete;

  // Replaces a reserve that was used, with one log line. False: there is still no memory. True also
  // when the process has no reserve.
  [[nodiscard]] static bool refill();
};

}  // namespace host
