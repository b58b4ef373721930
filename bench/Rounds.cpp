#include "Rounds.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace bench {

double median(std::vector<double> numbers) {
  std::sort(numbers.begin(), numbers.end());
  const std::size_t half = numbers.size() / 2;
  return numbers.size() % 2 == 1 ? numbers[half] : (numbers[half - 1] + numbers[half]) / 2;
}

double quantile(std::vector<double> numbers, double part) {
  const auto last = static_cast<double>(numbers.size() - 1);
  const auto rank = static_cast<std::ptrdiff_t>(std::floor(part * last));
  std::nth_element(numbers.begin(), numbers.begin() + rank, numbers.end());
  return numbers[static_cast<std::size_t>(rank)];
}

double middleMean(std::vector<double> numbers) {
  std::sort(numbers.begin(), numbers.end());
  const auto quarter = static_cast<std::ptrdiff_t>(numbers.size() / 4);
  const auto first = numbers.begin() + quarter;
  const auto last = numbers.end() - quarter;
  return std::accumulate(first, last, 0.0) / static_cast<double>(last - first);
}

void Rounds::add(double figure, double floor) {
  m_figures.push_back(figure);
  m_floors.push_back(floor);
  m_ratios.push_back(figure / floor);
  m_differences.push_back(figure - floor);
}

}  // namespace bench
