#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "base/Mutex.h"

namespace host {

// What came from the device and has not been skipped by an expectation yet, oldest first.
// Thread: any.
template <typename Item>
class Received {
 public:
  void add(Item item) {
    const MutexLock lock(m_mutex);
    m_items.push_back(std::move(item));
  }

  [[nodiscard]] std::vector<Item> all() const {
    const MutexLock lock(m_mutex);
    return m_items;
  }

  [[nodiscard]] std::size_t size() const {
    const MutexLock lock(m_mutex);
    return m_items.size();
  }

  // Skips the first item that is wanted, and those before it. False when there is none. The first
  // `from` items are known not to be wanted.
  template <typename Wanted>
  [[nodiscard]] bool skipTo(Wanted wanted, std::size_t from = 0) {
    const MutexLock lock(m_mutex);
    const std::size_t known = std::min(from, m_items.size());
    const auto found =
        std::find_if(m_items.begin() + static_cast<std::ptrdiff_t>(known), m_items.end(), wanted);
    if (found == m_items.end()) return false;
    m_items.erase(m_items.begin(), found + 1);
    return true;
  }

 private:
  mutable Mutex m_mutex;
  std::vector<Item> m_items CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
