#pragma once

#include <filesystem>
#include <ostream>
#include <span>

#include "FigureTable.h"

namespace bench {

// The command: reads the words, measures the figures they ask for, prints the table, and writes it
// as JSON to `json` unless the words name another file. Owner: a main.
class Bench {
 public:
  // All of them outlive this.
  Bench(std::span<const Figure> figures, std::filesystem::path json, std::ostream& table)
      : m_figures(figures), m_json(std::move(json)), m_table(table) {}

  // The exit status: 0 all bounds hold, 1 one does not or could not be measured, 2 usage. Throws
  // std::runtime_error when the JSON cannot be written; before it measures, if its file cannot.
  [[nodiscard]] int run(int argc, const char* const* argv) const;

 private:
  struct Options;

  [[nodiscard]] std::string wrongName(const std::string& name) const;
  [[nodiscard]] bool wanted(const Figure& figure, const Options& options) const;
  [[nodiscard]] int measure(const Options& options) const;

  const std::span<const Figure> m_figures;
  const std::filesystem::path m_json;
  std::ostream& m_table;
};

}  // namespace bench
