#pragma once

#include <cstddef>

namespace support {

// While it lives, its thread gets no memory from the objects of the test program: operator new, as
// they call it, throws std::bad_alloc. The libraries that the program shares keep theirs.
// For programs that link test_no_memory. Thread: one.
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
