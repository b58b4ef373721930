#pragma once

#include <cstddef>
#include <vector>

namespace bench {

// The median; of an even number, the mean of the two in the middle. REQUIRES: not empty.
[[nodiscard]] double median(std::vector<double> numbers);

// The number below which `part` (0-1) of them lie. REQUIRES: not empty.
[[nodiscard]] double quantile(std::vector<double> numbers, double part);

// The mean of the half in the middle: finer than the median of numbers that are whole, and as deaf
// to the few that were disturbed. REQUIRES: not empty.
[[nodiscard]] double middleMean(std::vector<double> numbers);

// What rounds have found in which a figure and its floor take turns. Medians, so that a round that
// the machine disturbed counts for nothing; the ratio is that of each round's own two numbers, so
// that a machine that slows down for a while slows both.
class Rounds {
 public:
  static constexpr std::size_t kLeast = 9;
  static constexpr std::size_t kUsual = 11;

  // Runs floor and figure, each of which returns its number, in turns.
  template <class Figure, class Floor>
  static Rounds alternate(Figure figure, Floor floor, std::size_t rounds = kUsual) {
    Rounds found;
    for (std::size_t i = 0; i < rounds; ++i) {
      const double below = floor();
      found.add(figure(), below);
    }
    return found;
  }

  void add(double figure, double floor);

  [[nodiscard]] double figure() const { return median(m_figures); }
  [[nodiscard]] double floor() const { return median(m_floors); }
  [[nodiscard]] double ratio() const { return median(m_ratios); }
  [[nodiscard]] double difference() const { return median(m_differences); }

 private:
  std::vector<double> m_figures;
  std::vector<double> m_floors;
  std::vector<double> m_ratios;
  std::vector<double> m_differences;
};

}  // namespace bench
