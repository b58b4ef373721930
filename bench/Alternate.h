#pragma once

#include <chrono>
#include <utility>
#include <vector>

#include "Figure.h"

namespace bench {

// The value below which `part` (0-1) of the numbers lie. REQUIRES: not empty.
[[nodiscard]] double quantile(std::vector<double> numbers, double part);

// Measures value and baseline alternately, so that a machine that slows down slows both. Each
// call returns a number. Returns the medians.
template <class Value, class Baseline>
[[nodiscard]] Sample alternately(std::size_t pairs, Value value, Baseline baseline) {
  std::vector<double> values;
  std::vector<double> baselines;
  for (std::size_t i = 0; i < pairs; ++i) {
    baselines.push_back(baseline());
    values.push_back(value());
  }
  return {quantile(std::move(values), 0.5), quantile(std::move(baselines), 0.5)};
}

// Real time that the work takes.
template <class Unit, class Work>
[[nodiscard]] double elapsed(Work work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return Unit(std::chrono::steady_clock::now() - begin).count();
}

using Microseconds = std::chrono::duration<double, std::micro>;
using Milliseconds = std::chrono::duration<double, std::milli>;

}  // namespace bench
