#pragma once

#include <map>
#include <optional>
#include <string>

#include "Rounds.h"

namespace bench {

// What was found for one figure.
struct Measured {
  double figure = 0;
  std::optional<double> floor;  // empty: the figure stands alone
  double compared = 0;          // what its bound is held against
};

// The three ways to compare.
[[nodiscard]] Measured ratioOf(const Rounds& rounds);
[[nodiscard]] Measured differenceOf(const Rounds& rounds);
[[nodiscard]] Measured alone(double figure);

// By the names of figures.
using Findings = std::map<std::string, Measured>;

}  // namespace bench
