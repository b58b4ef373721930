#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "simulation/Step.h"

namespace simulation {

// Where reference and telephone differ.
struct Difference {
  std::size_t step = 0;  // counted from 1; 0 is the first start
  Lines expected{};
  Lines actual{};
};

struct Run {
  Steps steps{};  // the steps up to the difference
  std::optional<Difference> difference{};
  std::uint64_t digest = 0;  // of everything that the telephone did and answered
};

// Takes these steps, or so many steps drawn from a seed, on a new telephone. An exception of the
// telephone is a difference. watch: called before each step with the steps up to it.
using Watch = std::function<void(const Run&)>;
[[nodiscard]] Run run(const Steps& steps, const Watch& watch = {});
[[nodiscard]] Run run(std::uint64_t seed, std::size_t steps, const Watch& watch = {});

// Leaves out steps while the same difference remains, for at most 20 s of real time.
// REQUIRES: a difference.
using Runner = std::function<Run(const Steps&)>;
[[nodiscard]] Run shrunk(Run run, const Runner& again,
                         std::chrono::steady_clock::duration most = std::chrono::seconds(20));

// The seed, the step, and the lines that differ on both sides.
[[nodiscard]] std::string differenceText(std::uint64_t seed, const Run& run);
// The last 60 steps of a shortened run, and the lines that differ.
[[nodiscard]] std::string shortestRunText(const Run& shortest);
// The first words of the first lines that differ, without digits: equal in two runs with the same
// fault.
[[nodiscard]] std::string faultOf(const Difference& difference);

}  // namespace simulation
