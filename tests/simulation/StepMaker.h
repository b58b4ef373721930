#pragma once

#include <cstdint>
#include <iterator>
#include <random>
#include <string>

#include "simulation/Step.h"

namespace simulation {

class Reference;

// Random numbers that depend only on the seed, not on the machine.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : m_numbers(seed) {}

  // A number from low to high, both included.
  std::int64_t between(std::int64_t low, std::int64_t high) {
    return low +
           static_cast<std::int64_t>(m_numbers() % static_cast<std::uint64_t>(high - low + 1));
  }
  bool oneIn(std::int64_t n) { return between(1, n) == 1; }
  template <class List>
  const auto& oneOf(const List& list) {
    return std::data(list)[between(0, static_cast<std::int64_t>(std::size(list)) - 1)];
  }

 private:
  std::mt19937_64 m_numbers;
};

// Draws the steps of a run. It uses the reference to find critical instants; the steps themselves
// are data. REQUIRES: TZ of the process is the telephone's.
class StepMaker {
 public:
  explicit StepMaker(std::uint64_t seed) : m_chance(seed) {}

  [[nodiscard]] Step next(const Reference& reference);
  [[nodiscard]] Step restart();

 private:
  Step make(Act act, const Reference& reference);
  Step makeSet(const Reference& reference);
  std::int64_t passedMs();
  std::int64_t momentMs();
  std::int64_t aroundMs();
  std::int64_t around() { return aroundMs() / 1000; }
  std::int64_t anySecond() { return m_chance.between(86400, 2147500000); }
  Step setTime();
  Step setDate();
  Step report(const Reference& reference);
  std::string caller();
  std::string valueFor(const std::string& key, const Reference& reference);
  std::string utc();

  Chance m_chance;
};

}  // namespace simulation
