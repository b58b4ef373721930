#pragma once

#include <cstddef>

namespace support {

// During its lifetime operator new throws std::bad_alloc on its thread. In builds with the thread
// sanitizer, which has an operator new of its own, only the program's own objects call this one,
// and not the C++ library. For programs that link test_no_memory. Thread: one.
class NoMemory {
 public:
  // after: how many allocations still succeed.
  explicit NoMemory(std::size_t after = 0);
  ~NoMemory();
  NoMemory(const NoMemory&) = delete;
  NoMemory& operator=(const NoMemory&) = delete;

  // Whether an allocation has failed.
  [[nodiscard]] static bool ranOut();
};

}  // namespace support
