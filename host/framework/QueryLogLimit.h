#pragma once

#include <chrono>
#include <utility>

namespace host {

// How many entries about remote calls that change nothing are kept in a second of real time. A
// client that asks again and again would push all others out, and each entry makes its calls
// slower. Thread: one.
class QueryLogLimit {
 public:
  static constexpr unsigned kMost = 30;  // of about ten calls

  // Whether the next entry is kept. `now` gives the second; it is asked only when kMost entries
  // were kept since the last time.
  template <class Now>
  bool admits(Now now) {
    if (m_left == 0) refill(now());
    if (m_left == 0) {
      ++m_dropped;
      return false;
    }
    --m_left;
    return true;
  }

  // The entries that were not kept, once after a new second has begun; 0 before.
  unsigned takeDropped() { return m_left == 0 ? 0 : std::exchange(m_dropped, 0); }

 private:
  void refill(std::chrono::seconds now) {
    if (now == m_second) return;
    m_second = now;
    m_left = kMost;
  }

  std::chrono::seconds m_second{-1};
  unsigned m_left = 0;
  unsigned m_dropped = 0;
};

}  // namespace host
