#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <span>

#include "Findings.h"

namespace bench {

// How many there are of what grows.
constexpr std::array<std::size_t, 5> kNumbers{1, 10, 100, 1000, 10'000};

// The slope of the straight line through the logarithms. 1: each costs the same, however many there
// are. REQUIRES: as many costs as numbers, two at least. Throws std::runtime_error: a cost is not
// above 0.
[[nodiscard]] double exponentOf(std::span<const std::size_t> numbers,
                                std::span<const double> costs);

// Of that many, in any unit.
using CostOf = std::function<double(std::size_t)>;

// From the median of the rounds for each of kNumbers.
// inTurns: each round goes through all numbers. onlyMore: all rounds of a number come before the
// next one, for what can only become more.
enum class Order { inTurns, onlyMore };
[[nodiscard]] Measured growthOf(const CostOf& cost, Order order = Order::inTurns);

}  // namespace bench
