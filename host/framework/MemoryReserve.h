#pragma once

#include <cstddef>

namespace host {

// Memory put aside for a shortage: the first allocation that fails gets it, so that the frame at
// hand can be finished. Cleaning up after a failure takes it, too: the JSON library allocates while
// it frees a document, and ends the process when it cannot.
// Owner: the process, one at a time. Thread: any. Failure: an allocation that fails between the use
// and refill() is a std::bad_alloc where it happens. On a thread that has not met the last use of
// the reserve it is tried once more before: the thread that used it may have made room.
class MemoryReserve {
 public:
  // Far more than a usual request takes. Nothing touches it before it is needed.
  static constexpr std::size_t kSize = 4UL * 1024 * 1024;

  MemoryReserve();
  ~MemoryReserve();
  MemoryReserve(const MemoryReserve&) = delete;
  MemoryReserve& operator=(const MemoryReserve&) = delete;

  // Makes a reserve that was used whole again, with one log line. False: there is still no memory
  // to be had. True also when the process has no reserve.
  [[nodiscard]] static bool refill();
};

}  // namespace host
