#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include "simulation/Count.h"

namespace simulation {

// How many steps one of so many lots lives: the text asks for them, or where there is none the
// usual number holds. Throws when that is no number, or leaves a lot without a step: a test that
// lives nothing must not pass.
[[nodiscard]] inline std::size_t lotSteps(const char* asked, std::size_t usual, std::size_t lots) {
  const auto steps = asked == nullptr ? std::optional<std::uint64_t>(usual) : countIn(asked);
  if (steps && *steps >= lots) return *steps / lots;
  const std::string text = asked == nullptr ? std::to_string(usual) : asked;
  throw std::invalid_argument("\"" + text + "\" is no number of steps for " + std::to_string(lots) +
                              " lots");
}

}  // namespace simulation
