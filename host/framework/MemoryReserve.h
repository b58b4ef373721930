#pragma once

#include <cstddef>

namespace host {

// Memory that the first failed allocation releases, so that the current frame can be finished. The
// JSON library needs it above all: it allocates while it frees a document, and terminates the
// process when it cannot. Owner: the process, one at a time. Thread: any; refill() the loop's.
// Failure: once the reserve is used, failed allocations throw std::bad_alloc until refill().
class MemoryReserve {
 public:
  // Far more than a usual request takes. The pages are not touched before they are needed.
  static constexpr std::size_t kSize = 4UL * 1024 * 1024;

  MemoryReserve();
  ~MemoryReserve();
  MemoryReserve(const MemoryReserve&) = delete;
  MemoryReserve& operator=(const MemoryReserve&) = delete;

  // Replaces a used reserve, with one log line. False: there is still not enough memory. True also
  // in a process without a reserve.
  [[nodiscard]] static bool refill();
};

}  // namespace host
