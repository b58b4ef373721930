#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "simulation/Journal.h"
#include "simulation/Step.h"

namespace simulation {

// Where model and telephone went apart.
struct Difference {
  std::size_t step = 0;  // counted from 1; 0 is the first start
  Lines expected;
  Lines actual;
};

struct Life {
  Steps steps;  // those that were taken, up to the difference
  std::optional<Difference> difference;
  std::uint64_t digest = 0;  // of everything the telephone did and said
};

// Lives these steps from a fresh start.
[[nodiscard]] Life live(const Steps& steps);

// The life of a seed.
[[nodiscard]] Life live(std::uint64_t seed, std::size_t steps);

// Leaves steps out as long as there is still a difference when the rest is lived. Gives up after
// kMostSteps steps in all. REQUIRES: life.difference.
using Liver = std::function<Life(const Steps&)>;
[[nodiscard]] Life shrunk(const Life& life, const Liver& again);
inline constexpr std::size_t kMostSteps = 2'000'000;

// What a person needs to see of a difference: seed, step, both sides, the steps that lead there.
[[nodiscard]] std::string report(std::uint64_t seed, const Life& life, const Life& shortest);

}  // namespace simulation
