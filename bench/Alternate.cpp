#include "Alternate.h"

#include <algorithm>
#include <cmath>

namespace bench {

double quantile(std::vector<double> numbers, double part) {
  const auto last = static_cast<double>(numbers.size() - 1);
  const auto rank = static_cast<std::ptrdiff_t>(std::floor(part * last));
  std::nth_element(numbers.begin(), numbers.begin() + rank, numbers.end());
  return numbers[static_cast<std::size_t>(rank)];
}

}  // namespace bench
