#pragma once

#include <cstddef>

namespace bench {

// Counts what this thread takes from the heap while the object lives: by malloc, calloc, realloc
// and those that align, on which every operator new stands; in the plug-in and in the libraries
// too.
class HeapCount {
 public:
  HeapCount();
  [[nodiscard]] std::size_t allocations() const;

 private:
  std::size_t m_before;
};

}  // namespace bench
