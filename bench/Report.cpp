#include "Report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace bench {
namespace {

constexpr int kSignificantDigits = 4;

// A line of the table: figure, its value, floor, its value, ratio, bound, verdict.
using Cells = std::array<std::string, 7>;

std::string tableLine(const Cells& cells) {
  constexpr std::array<int, 6> kWidths{-44, 12, -32, 11, 9, 10};  // negative: to the left
  std::string line;
  for (std::size_t i = 0; i < kWidths.size(); ++i) {
    std::array<char, 100> text{};
    std::snprintf(text.data(), text.size(), "%*s ", kWidths.at(i), cells.at(i).c_str());
    line += text.data();
  }
  return line + ' ' + cells.back() + '\n';
}

std::string number(double value, const char* unit) {
  std::array<char, 40> text{};
  const bool hasMagnitude = value != 0 && std::isfinite(value);
  const double magnitude = hasMagnitude ? std::floor(std::log10(std::fabs(value))) : 0;
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

nlohmann::ordered_json valuesOf(const Figure& figure, const Measured& measured) {
  nlohmann::ordered_json values = {{"value", measured.figure}};
  if (measured.floor) {
    values["floor"] = figure.floor;
    values["floorValue"] = *measured.floor;
    values[isDifference(figure.bound) ? "difference" : "ratio"] = measured.compared;
  }
  return values;
}

}  // namespace

Report::Report(double factor, std::ostream& table) : m_factor(factor), m_table(table) {
  m_table << tableLine({"figure", "", "floor", "", "ratio", "bound", ""});
}

void Report::add(const Figure& figure, const Measured& measured) {
  tell(m_lines.emplace_back(Line{&figure, figure.bound.widened(m_factor), measured, ""}));
}

void Report::addFailure(const Figure& figure, const std::string& why) {
  tell(m_lines.emplace_back(Line{&figure, figure.bound.widened(m_factor), std::nullopt, why}));
}

const char* Report::verdict(const Line& line) {
  if (!line.isHeldTo()) return "told";
  return line.holds() ? "ok" : "OVER";
}

void Report::tell(const Line& line) {
  const Figure& figure = *line.figure;
  Cells cells{figure.what, "", figure.floor, "", "", line.bound.text(), "FAILED: " + line.failure};
  if (line.measured) {
    cells[1] = number(line.measured->figure, figure.unit);
    if (line.measured->floor) cells[3] = number(*line.measured->floor, figure.unit);
    cells[4] = comparison(*line.measured, line.bound);
    cells[6] = verdict(line);
  }
  m_table << tableLine(cells) << std::flush;
}

bool Report::allHold() const {
  return std::all_of(m_lines.begin(), m_lines.end(), [](const Line& line) { return line.holds(); });
}

std::string Report::json() const {
  nlohmann::ordered_json whole = {{"factor", m_factor}};
  for (const Line& line : m_lines) {
    nlohmann::ordered_json row = {
        {"name", line.figure->name}, {"figure", line.figure->what}, {"unit", line.figure->unit}};
    if (line.measured) row.update(valuesOf(*line.figure, *line.measured));
    if (!line.measured) row["failure"] = line.failure;
    row["bound"] = line.bound.text();
    if (line.isHeldTo() || !line.measured) row["ok"] = line.holds();
    whole["figures"].push_back(row);
  }
  whole["ok"] = allHold();
  // What a failure says may come from elsewhere, in whatever bytes.
  constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
  return whole.dump(2, ' ', false, kReplace) + '\n';
}

}  // namespace bench
