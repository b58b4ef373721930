#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace simulation {

// Random numbers that are the same everywhere for the same seed.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : m_state(seed) {}

  std::uint64_t next() {
    m_state += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = m_state;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
  }

  // From low to high, both included.
  std::int64_t between(std::int64_t low, std::int64_t high) {
    const auto span = static_cast<std::uint64_t>(high - low) + 1;
    return low + static_cast<std::int64_t>(next() % span);
  }
  bool oneIn(std::int64_t n) { return between(1, n) == 1; }

  template <class List>
  const auto& oneOf(const List& list) {
    const auto last = static_cast<std::int64_t>(std::size(list)) - 1;
    return *(std::begin(list) + static_cast<std::ptrdiff_t>(between(0, last)));
  }

 private:
  std::uint64_t m_state;
};

}  // namespace simulation
