#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

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

// How long it may take to leave steps out, by the machine's clock.
inline constexpr std::chrono::seconds kLongestShrinking{20};

// Leaves steps out as long as the same difference is still there when the rest is lived. Gives up
// after that long: what is left by then is the shortest. REQUIRES: life.difference.
using Liver = std::function<Life(const Steps&)>;
[[nodiscard]] Life shrunk(const Life& life, const Liver& again,
                          std::chrono::steady_clock::duration most = kLongestShrinking);

}  // namespace simulation
