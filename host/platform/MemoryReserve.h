#pragma once

#include <cstddef>

namespace host {

// Memory put aside for when there is none: the first allocation that fails gets it, so that the
// frame at hand can be finished. Without it a failure could not even be cleaned up after: the JSON
// library frees a document with the help of memory of its own, and ends the process without.
// Owner: the process, one at a time. Thread: any. Failure: a second shortage before refill() is a
// std::bad_alloc where it happens.
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
