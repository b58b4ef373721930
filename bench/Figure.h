#pragma once

#include <optional>

#include "Bound.h"

namespace bench {

// What one repetition found, in the unit of its figure.
struct Found {
  double value = 0;
  std::optional<double> baseline;
};

// One row of the table.
struct Figure {
  const char* name;  // for --only and the JSON
  const char* what;
  const char* baseline;  // what it is compared with; empty: nothing
  const char* unit;
  Bound bound;
  int repetitions;     // at least 2: a single one has no statistics
  Found (*measure)();  // one repetition; throws why it cannot be measured
};

// Statistics of all repetitions.
struct Measured {
  double value = 0;  // median
  std::optional<double> baseline;
  double compared = 0;  // median of what the bound limits
  double noise = 0;     // its coefficient of variation
};

}  // namespace bench
