#pragma once

#include "Figure.h"

namespace bench {

// Repeats a figure's measurement with Google Benchmark, and returns the statistics.
// Throws std::runtime_error with the first failure; no further repetition is run.
[[nodiscard]] Measured repeat(const Figure& figure);

}  // namespace bench
