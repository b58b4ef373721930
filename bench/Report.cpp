#include "Report.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace bench {
namespace {

constexpr int kSignificantDigits = 4;
constexpr char kFormat[] = "%-44s %13s  %-24s %13s %9s %10s  %s\n";

std::string number(double value, const char* unit) {
  std::array<char, 40> text{};
  const double magnitude = value == 0 ? 0 : std::floor(std::log10(std::fabs(value)));
  const int decimals = std::max(0, kSignificantDigits - 1 - static_cast<int>(magnitude));
  const bool whole = value == std::round(value);
  std::snprintf(text.data(), text.size(), "%.*f %s", whole ? 0 : decimals, value, unit);
  return text.data();
}

bool isDifference(const Bound& bound) {
  return bound.kind == Bound::Kind::differenceAtMost;
}

// The ratio, or the difference where that is what counts.
std::string comparison(const Measured& measured, const Bound& bound) {
  if (!measured.floor) return "";
  std::array<char, 40> text{};
  if (isDifference(bound)) {
    std::snprintf(text.data(), text.size(), "+ %.4g", measured.compared);
  } else {
    std::snprintf(text.data(), text.size(), "%.2f x", measured.compared);
  }
  return text.data();
}

}  // namespace

void Report::printHead() {
  std::printf(kFormat, "figure", "", "floor", "", "ratio", "bound", "");
}

void Report::add(const Figure& figure, const Measured& measured) {
  const Bound bound = figure.bound.widened(m_factor);
  const bool holds = bound.holds(measured);
  m_lines.push_back({&figure, measured, bound, holds});
  if (!holds) ++m_over;
  const std::string floor = measured.floor ? number(*measured.floor, figure.unit) : "";
  std::printf(kFormat, figure.what, number(measured.figure, figure.unit).c_str(), figure.floor,
              floor.c_str(), comparison(measured, bound).c_str(), bound.text().c_str(),
              holds ? "ok" : "OVER");
  std::fflush(stdout);
}

std::string Report::json() const {
  nlohmann::ordered_json whole = {{"factor", m_factor}};
  for (const Line& line : m_lines) {
    nlohmann::ordered_json row = {{"name", line.figure->name},
                                  {"figure", line.figure->what},
                                  {"unit", line.figure->unit},
                                  {"value", line.measured.figure}};
    if (line.measured.floor) {
      row["floor"] = line.figure->floor;
      row["floorValue"] = *line.measured.floor;
      row[isDifference(line.bound) ? "difference" : "ratio"] = line.measured.compared;
    }
    row["bound"] = line.bound.text();
    row["ok"] = line.holds;
    whole["figures"].push_back(row);
  }
  whole["ok"] = allHold();
  return whole.dump(2) + '\n';
}

}  // namespace bench
