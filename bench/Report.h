#pragma once

#include <string>

#include "FigureTable.h"

namespace bench {

// The bounds of figures that were measured, held or not.
class Report {
 public:
  // factor: how much wider timed bounds are.
  explicit Report(double factor) : m_factor(factor) {}

  // Prints a line of the table.
  void add(const Figure& figure, const Measured& measured);

  [[nodiscard]] bool allHold() const { return m_over == 0; }
  [[nodiscard]] std::string json() const;

  static void printHead();

 private:
  struct Line {
    const Figure* figure;
    Measured measured;
    Bound bound;
    bool holds;
  };

  const double m_factor;
  std::vector<Line> m_lines;
  std::size_t m_over = 0;
};

}  // namespace bench
