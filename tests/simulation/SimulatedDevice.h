#pragma once

#include <functional>

#include "support/Journal.h"

namespace simulation {

// The random numbers of this program's srand and rand: 0 to 2147483647.
class Random {
 public:
  void seed(unsigned int number) { m_state = number; }
  int next() {
    m_state = m_state * 1664525U + 1013904223U;
    return static_cast<int>((m_state ^ (m_state >> 16U)) & 0x7FFFFFFFU);
  }

 private:
  unsigned int m_state = 1;
};

// Replaces the platform's processes, threads and lookups and the C library's random numbers and
// syncs: no program is started, no other machine is asked, and nothing waits for a disk. Owner: the
// process. The telephone sets it before a service runs.
struct SimulatedDevice {
  support::Journal* journal = nullptr;
  bool launchFails = false;
  bool lookupsFail = false;
  Random random;
  std::function<void()> beforeWaiting;  // called before waiting for a thread's end
};

[[nodiscard]] SimulatedDevice& device();

}  // namespace simulation
