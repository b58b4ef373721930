#pragma once

#include <cstddef>

namespace bench {

// Counts what this process takes from the heap by operator new while the object lives, the
// plug-in's own included.
class HeapCount {
 public:
  HeapCount();
  [[nodiscard]] std::size_t allocations() const;

 private:
  std::size_t m_before;
};

}  // namespace bench
