#include "Growth.h"

#include <cmath>
#include <stdexcept>
#include <vector>

#include "Rounds.h"

namespace bench {
namespace {

using Costs = std::array<std::vector<double>, kNumbers.size()>;

Costs costsInTurns(const CostOf& cost) {
  Costs found;
  for (std::size_t round = 0; round < Rounds::kLeast; ++round) {
    for (std::size_t i = 0; i < found.size(); ++i) found.at(i).push_back(cost(kNumbers.at(i)));
  }
  return found;
}

Costs costsOfMore(const CostOf& cost) {
  Costs found;
  for (std::size_t i = 0; i < found.size(); ++i) {
    while (found.at(i).size() < Rounds::kLeast) found.at(i).push_back(cost(kNumbers.at(i)));
  }
  return found;
}

double logarithmOf(double cost) {
  if (!(cost > 0)) throw std::runtime_error("a cost is lost in what is around it");
  return std::log(cost);
}

}  // namespace

double exponentOf(std::span<const std::size_t> numbers, std::span<const double> costs) {
  const auto count = static_cast<double>(numbers.size());
  double sumX = 0, sumY = 0, sumXX = 0, sumXY = 0;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const double x = std::log(static_cast<double>(numbers[i]));
    const double y = logarithmOf(costs[i]);
    sumX += x;
    sumY += y;
    sumXX += x * x;
    sumXY += x * y;
  }
  return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

Measured growthOf(const CostOf& cost, Order order) {
  const Costs found = order == Order::inTurns ? costsInTurns(cost) : costsOfMore(cost);
  std::array<double, kNumbers.size()> costs{};
  for (std::size_t i = 0; i < costs.size(); ++i) costs.at(i) = median(found.at(i));
  return alone(exponentOf(kNumbers, costs));
}

}  // namespace bench
