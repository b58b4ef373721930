#include "Bench.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
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

// A file that is opened before all measuring: one that cannot be is told at once.
class JsonFile {
 public:
  explicit JsonFile(const std::filesystem::path& file) : m_file(file), m_stream(file) { check(); }
  void write(const std::string& text) {
    m_stream << text << std::flush;
    check();
  }

 private:
  void check() const {
    if (!m_stream) throw std::runtime_error(m_file.string() + ": cannot be written");
  }

  const std::filesystem::path m_file;
  std::ofstream m_stream;
};

// Empty for one. Ranges let through what is no number: it is not below and not above.
std::string wrongNumber(const std::string& word) {
  double number = 0;
  const bool right = CLI::detail::lexical_cast(word, number) && std::isfinite(number);
  return right ? "" : word + " is no finite number";
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
      ->check(CLI::Range(1.0, 100.0))
      ->check(wrongNumber);
  app.add_option("--json", options.json, "Where to write the table as JSON")->type_name("FILE");
  app.add_option("--only", options.only, "Figures to measure, by name")
      ->type_name("NAME")
      ->check([this](const std::string& name) { return wrongName(name); });
  app.add_option("--arm-size", options.armBytes, "Text and data of the plug-in for ARM")
      ->type_name("BYTES")
      ->check(CLI::PositiveNumber)
      ->check(wrongNumber);
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
  JsonFile json(options.json);
  Findings told;
  if (options.armBytes > 0) told[kToldSize] = alone(options.armBytes);
  Measures measures(std::move(told));
  Report report(options.factor, m_table);
  for (const Figure& figure : m_figures) {
    if (wanted(figure, options)) measures.report(figure, report);
  }
  json.write(report.json());
  m_table << "as JSON in " << std::filesystem::proximate(options.json).string() << std::endl;
  return report.allHold() ? 0 : 1;
}

}  // namespace bench
