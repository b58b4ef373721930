#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "Figure.h"

namespace bench {

// Prints each figure with its bound and verdict as soon as it is added, and keeps it for the JSON.
class Report {
 public:
  // factor: how much wider bounds are. table: outlives this.
  Report(double factor, std::ostream& table);

  void add(const Figure& figure, const Measured& measured);
  // why: one line.
  void addFailure(const Figure& figure, const std::string& why);

  // True when every bound was met, and every figure measured.
  [[nodiscard]] bool allHold() const { return m_allHold; }
  // The table as JSON, with the date and the processor. commit: the measured one; empty: unknown.
  [[nodiscard]] std::string json(const std::string& commit) const;

 private:
  const double m_factor;
  std::ostream& m_table;
  nlohmann::ordered_json m_figures = nlohmann::ordered_json::array();
  bool m_allHold = true;
};

}  // namespace bench
