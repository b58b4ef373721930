#pragma once

#include "Figure.h"

namespace bench {

// Has Google Benchmark repeat a figure's measure, and returns its statistics.
// Throws std::runtime_error: the first failure of a repetition, which is the last one run.
[[nodiscard]] Measured repeat(const Figure& figure);

}  // namespace bench
