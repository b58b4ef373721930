#include "Report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>

namespace bench {
namespace {

constexpr int kSignificantDigits = 4;

// A line of the table: figure, value, baseline, its value, comparison, noise, bound, verdict.
using Cells = std::array<std::string, 8>;

std::string tableLine(const Cells& cells) {
  constexpr std::array<int, 7> kWidths{-42, 11, -24, 11, 9, 6, 9};  // negative: to the left
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
  const bool whole = value == std::round(value) || !std::isfinite(value);
  const double magnitude = whole ? 0 : std::floor(std::log10(std::fabs(value)));
  const int decimals = std::max(0, kSignificantDigits - 1 - static_cast<int>(magnitude));
  std::snprintf(text.data(), text.size(), "%.*f %s", whole ? 0 : decimals, value, unit);
  return text.data();
}

bool isDifference(const Bound& bound) {
  return bound.kind == Bound::Kind::differenceAtMost;
}

std::string comparison(double compared, const Bound& bound) {
  std::array<char, 40> text{};
  if (isDifference(bound)) {
    std::snprintf(text.data(), text.size(), "+ %.4g", compared);
  } else {
    std::snprintf(text.data(), text.size(), "%.2f x", compared);
  }
  return text.data();
}

std::string percent(double part) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%.1f %%", part * 100);
  return text.data();
}

std::string verdict(const Bound& bound, const Measured& measured) {
  if (bound.kind == Bound::Kind::none) return "info";
  const std::string word = bound.holds(measured.compared) ? "ok" : "OVER";
  return measured.rounds == 1 ? word
                              : word + ", measured " + std::to_string(measured.rounds) + " times";
}

nlohmann::ordered_json rowOf(const Figure& figure, const Bound& bound) {
  return {{"name", figure.name},
          {"figure", figure.what},
          {"unit", figure.unit},
          {"bound", bound.text()}};
}

// The current time in UTC, such as 2030-01-15T12:20:00Z.
std::string date() {
  const std::time_t now = std::time(nullptr);
  std::array<char, 40> text{};
  std::strftime(text.data(), text.size(), "%FT%TZ", std::gmtime(&now));
  return text.data();
}

// The name of the processor. Empty if the kernel does not report it.
std::string processor() {
  std::ifstream lines("/proc/cpuinfo");
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return {};
}

}  // namespace

Report::Report(double factor, std::ostream& table) : m_factor(factor), m_table(table) {
  m_table << tableLine({"figure", "", "baseline", "", "compared", "noise", "bound", ""});
}

void Report::add(const Figure& figure, const Measured& measured) {
  const Bound bound = figure.bound.widened(m_factor);
  Cells cells{figure.what, number(measured.value, figure.unit), figure.baseline};
  nlohmann::ordered_json row = rowOf(figure, bound);
  row["value"] = measured.value;
  if (measured.baseline) {
    cells[3] = number(*measured.baseline, figure.unit);
    cells[4] = comparison(measured.compared, bound);
    row["baseline"] = figure.baseline;
    row["baselineValue"] = *measured.baseline;
    row[isDifference(bound) ? "difference" : "ratio"] = measured.compared;
  }
  row["noise"] = measured.noise;
  row["rounds"] = measured.rounds;
  if (measured.noise > 0) cells[5] = percent(measured.noise);
  cells[6] = bound.text();
  cells[7] = verdict(bound, measured);
  if (bound.kind != Bound::Kind::none) row["ok"] = bound.holds(measured.compared);
  m_allHold = m_allHold && bound.holds(measured.compared);
  m_figures.push_back(row);
  m_table << tableLine(cells) << std::flush;
}

void Report::addFailure(const Figure& figure, const std::string& why) {
  const Bound bound = figure.bound.widened(m_factor);
  nlohmann::ordered_json row = rowOf(figure, bound);
  row["failure"] = why;
  row["ok"] = false;
  m_allHold = false;
  m_figures.push_back(row);
  m_table << tableLine(
                 {figure.what, "", figure.baseline, "", "", "", bound.text(), "FAILED: " + why})
          << std::flush;
}

std::string Report::json(const std::string& commit) const {
  const nlohmann::ordered_json whole = {{"commit", commit},       {"date", date()},
                                        {"machine", processor()}, {"factor", m_factor},
                                        {"figures", m_figures},   {"ok", m_allHold}};
  // The text of a failure may contain bytes that are not UTF-8.
  constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
  return whole.dump(2, ' ', false, kReplace) + '\n';
}

}  // namespace bench
