#include "Bench.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "Report.h"

namespace bench {
namespace {

constexpr const char* kToldSize = "arm-size";

// Runs each measure once, however many figures it finds.
class Measures {
 public:
  explicit Measures(Findings told) : m_findings(std::move(told)) {}

  void report(const Figure& figure, Report& report) {
    if (!m_findings.contains(figure.name) && !m_failures.contains(figure.measure)) run(figure);
    if (const auto found = m_findings.find(figure.name); found != m_findings.end()) {
      report.add(figure, found->second);
    } else {
      report.addFailure(figure, m_failures[figure.measure]);
    }
  }

 private:
  void run(const Figure& figure) {
    try {
      figure.measure(m_findings);
      m_failures[figure.measure] = "it was not found";
    } catch (const std::exception& error) {
      m_failures[figure.measure] = error.what();
    }
  }

  Findings m_findings;
  std::map<Figure::Measure, std::string> m_failures;  // why figures of a measure are missing
};

void write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream stream(file);
  stream << text;
  if (!stream.flush()) throw std::runtime_error(file.string() + ": cannot be written");
}

}  // namespace

struct Bench::Options {
  double factor = 1;
  std::string json;
  std::vector<std::string> only;
  double armBytes = 0;  // 0: not told
};

// Empty for a right one.
std::string Bench::wrongName(const std::string& name) const {
  std::string names;
  for (const Figure& figure : m_figures) {
    if (name == figure.name) return "";
    names += std::string(names.empty() ? "" : ", ") + figure.name;
  }
  return "no figure \"" + name + "\"; there are " + names;
}

int Bench::run(int argc, const char* const* argv) const {
  Options options;
  options.json = m_json.string();
  CLI::App app("Measures the clock beside its floors and holds it to its bounds.", "bench");
  app.add_option("--factor", options.factor,
                 "How much wider bounds are: of times, and of exponents above 1; not of counts")
      ->check(CLI::Range(1.0, 100.0));
  app.add_option("--json", options.json, "Where to write the table as JSON")->type_name("FILE");
  app.add_option("--only", options.only, "Figures to measure, by name")
      ->type_name("NAME")
      ->check([this](const std::string& name) { return wrongName(name); });
  app.add_option("--arm-size", options.armBytes, "Text and data of the plug-in for ARM")
      ->type_name("BYTES");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& end) {
    return app.exit(end) == 0 ? 0 : 2;
  }
  return measure(options);
}

bool Bench::wanted(const Figure& figure, const Options& options) const {
  return options.only.empty() ||
         std::find(options.only.begin(), options.only.end(), figure.name) != options.only.end();
}

int Bench::measure(const Options& options) const {
  Findings told;
  if (options.armBytes > 0) told[kToldSize] = alone(options.armBytes);
  Measures measures(std::move(told));
  Report report(options.factor, m_table);
  for (const Figure& figure : m_figures) {
    if (wanted(figure, options)) measures.report(figure, report);
  }
  write(options.json, report.json());
  m_table << "as JSON in " << std::filesystem::proximate(options.json).string() << std::endl;
  return report.allHold() ? 0 : 1;
}

}  // namespace bench
