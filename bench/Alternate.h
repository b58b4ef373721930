#pragma once

#include <chrono>
#include <utility>
#include <vector>

#include "Figure.h"

namespace bench {

// The number below which `part` (0-1) of them lie. REQUIRES: not empty.
[[nodiscard]] double quantile(std::vector<double> numbers, double part);

// Measures baseline and figure alternately, so that a machine that slows down slows both. Each
// returns its number; the medians are found.
template <class Figure, class Baseline>
[[nodiscard]] Found alternately(std::size_t pairs, Figure figure, Baseline baseline) {
  std::vector<double> values;
  std::vector<double> baselines;
  for (std::size_t i = 0; i < pairs; ++i) {
    baselines.push_back(baseline());
    values.push_back(figure());
  }
  return {quantile(std::move(values), 0.5), quantile(std::move(baselines), 0.5)};
}

template <class Unit, class Work>
[[nodiscard]] double elapsed(Work work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return Unit(std::chrono::steady_clock::now() - begin).count();
}

using Microseconds = std::chrono::duration<double, std::micro>;
using Milliseconds = std::chrono::duration<double, std::milli>;

}  // namespace bench
