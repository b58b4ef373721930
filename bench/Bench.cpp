#include "Bench.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Repetitions.h"
#include "Report.h"

namespace bench {
namespace {

struct Options {
  double factor = 1;
  std::string commit;
  std::string json;
  std::vector<std::string> only;

  [[nodiscard]] bool wants(const char* name) const {
    return only.empty() || std::find(only.begin(), only.end(), name) != only.end();
  }
};

// What is wrong, or an empty text. CLI::Range accepts words that are not numbers.
std::string wrongFactor(const std::string& word) {
  double factor = 0;
  const bool right = CLI::detail::lexical_cast(word, factor) && factor >= 1 && factor <= 100;
  return right ? "" : word + " is not a number from 1 to 100";
}

std::vector<std::string> namesOf(std::span<const Figure> figures) {
  std::vector<std::string> names;
  for (const Figure& figure : figures) names.emplace_back(figure.name);
  return names;
}

void addTo(Report& report, const Figure& figure) {
  try {
    report.add(figure, repeat(figure));
  } catch (const std::exception& error) {
    report.addFailure(figure, error.what());
  }
}

void requireGood(const std::ofstream& stream, const std::string& file) {
  if (!stream) throw std::runtime_error(file + ": cannot be written");
}

int measure(std::span<const Figure> figures, const Options& options, std::ostream& table) {
  std::ofstream json(options.json);
  requireGood(json, options.json);
  Report report(options.factor, table);
  for (const Figure& figure : figures) {
    if (options.wants(figure.name)) addTo(report, figure);
  }
  json << report.json(options.commit) << std::flush;
  requireGood(json, options.json);
  table << "JSON: " << std::filesystem::proximate(options.json).string() << std::endl;
  return report.allHold() ? 0 : 1;
}

}  // namespace

int run(int argc, const char* const* argv, std::span<const Figure> figures,
        const std::filesystem::path& json, std::ostream& table) {
  Options options;
  options.json = json.string();
  CLI::App app("Measures the clock, and compares each figure with its bound.", "bench");
  app.add_option("--commit", options.commit, "The commit that is measured; written to the JSON")
      ->type_name("TEXT");
  app.add_option("--factor", options.factor,
                 "Multiplies the bounds of times by this number, 1 to 100")
      ->check(wrongFactor);
  app.add_option("--json", options.json, "Where to write the table as JSON")->type_name("FILE");
  app.add_option("--only", options.only, "Figures to measure, by name")
      ->type_name("NAME")
      ->check(CLI::IsMember(namesOf(figures)));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& end) {
    return app.exit(end) == 0 ? 0 : 2;
  }
  return measure(figures, options, table);
}

}  // namespace bench
