#include "Rounds.h"

#include <algorithm>
#include <cmath>

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

void Rounds::add(double figure, double floor) {
  m_figures.push_back(figure);
  m_floors.push_back(floor);
  m_ratios.push_back(figure / floor);
  m_differences.push_back(figure - floor);
}

}  // namespace bench
