#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace simulation {

// What ./dev simulate is told.
struct Options {
  std::uint64_t seed = 0;
  std::uint64_t steps = 5000;
  std::uint64_t lives = 20;
};

// seed: the one to take where the words name none. Throws std::invalid_argument with one line for
// words that it cannot use, and for lives or steps of which there would be none.
[[nodiscard]] Options optionsIn(const std::vector<std::string_view>& words, std::uint64_t seed);

}  // namespace simulation
