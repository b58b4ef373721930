#pragma once

#include <optional>

#include "Bound.h"

namespace bench {

// The result of one repetition, in the unit of its figure.
struct Sample {
  double value = 0;
  std::optional<double> baseline;
};

// One row of the table.
struct Figure {
  const char* name;  // for --only and the JSON
  const char* what;
  const char* baseline;  // what the value is compared with; empty: nothing
  const char* unit;
  Bound bound;
  int repetitions;      // at least 2, for the statistics
  Sample (*measure)();  // one repetition; throws an exception that says why it cannot be measured
};

// Statistics of all repetitions of the last round.
struct Measured {
  double value = 0;  // median
  std::optional<double> baseline;
  double compared = 0;  // median of what the bound limits
  double noise = 0;     // its coefficient of variation
  int rounds = 1;       // until the bound was met
};

}  // namespace bench
