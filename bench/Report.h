#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "FigureTable.h"

namespace bench {

// The figures that were asked for: their bounds, held or not, or why there is none.
class Report {
 public:
  // factor: how much wider bounds are. table: where its lines go as they come; outlives this.
  Report(double factor, std::ostream& table);

  void add(const Figure& figure, const Measured& measured);
  // It could not be measured. why: one line.
  void addFailure(const Figure& figure, const std::string& why);

  [[nodiscard]] bool allHold() const;
  [[nodiscard]] std::string json() const;

 private:
  struct Line {
    const Figure* figure;
    Bound bound;
    std::optional<Measured> measured;
    std::string failure;

    [[nodiscard]] bool isHeldTo() const { return bound.kind != Bound::Kind::none; }
    [[nodiscard]] bool holds() const { return measured && bound.holds(*measured); }
  };

  [[nodiscard]] static const char* verdict(const Line& line);
  void tell(const Line& line);

  const double m_factor;
  std::ostream& m_table;
  std::vector<Line> m_lines;
};

}  // namespace bench
