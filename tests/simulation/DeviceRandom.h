#pragma once

namespace simulation {

// The device's random numbers: what the C library's srand and rand are in this program, and what
// the model reckons with. 0 to 2147483647.
class DeviceRandom {
 public:
  void seed(unsigned int number) { m_state = number; }
  int next() {
    m_state = m_state * 1664525U + 1013904223U;
    return static_cast<int>((m_state ^ (m_state >> 16U)) & 0x7FFFFFFFU);
  }

 private:
  unsigned int m_state = 1;
};

}  // namespace simulation
