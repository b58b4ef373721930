#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "simulation/Life.h"

namespace simulation {

// How many steps of a way are shown: the last ones.
inline constexpr std::size_t kShownSteps = 60;

// What a person needs to see of a difference: seed, step, both sides. REQUIRES: life.difference.
[[nodiscard]] std::string differenceText(std::uint64_t seed, const Life& life);

// The steps that lead to a difference from a first start, and both sides there.
[[nodiscard]] std::string wayText(const Life& shortest);

// What makes two differences the same fault: how the first lines that differ begin, on both sides,
// without their digits, which depend on what happened before.
[[nodiscard]] std::string faultOf(const Difference& difference);

}  // namespace simulation
