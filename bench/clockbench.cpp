// Speed, size and wake-ups of the clock, each beside what could not be done with less.
#include <sched.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "FigureTable.h"
#include "Report.h"

namespace {

using bench::Figure;
using bench::figures;

struct Options {
  double factor = 1;
  std::string json;
  std::vector<std::string> only;
  double armBytes = 0;  // 0: not told
};

std::string checkName(const std::string& name) {
  std::string names;
  for (const Figure& figure : figures()) {
    if (name == figure.name) return "";
    names += std::string(names.empty() ? "" : ", ") + figure.name;
  }
  return "no figure \"" + name + "\"; there are " + names;
}

// False when there is nothing to do but to end.
bool read(int argc, char** argv, Options& options, int& status) {
  CLI::App app("Measures the clock beside its floors and holds it to its bounds.", "bench");
  app.add_option("--factor", options.factor, "How much wider timed bounds are")
      ->check(CLI::Range(1.0, 100.0));
  app.add_option("--json", options.json, "Where to write the table as JSON")->type_name("FILE");
  app.add_option("--only", options.only, "Figures to measure, by name")
      ->type_name("NAME")
      ->check(checkName);
  app.add_option("--arm-size", options.armBytes, "Text and data of the plug-in for ARM")
      ->type_name("BYTES");
  try {
    app.parse(argc, argv);
    return true;
  } catch (const CLI::ParseError& end) {
    status = app.exit(end) == 0 ? 0 : 2;
    return false;
  }
}

// This process and those it starts share one processor, the last one it may use.
void pinToOneProcessor() {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return;
  std::size_t last = CPU_SETSIZE - 1;
  while (last > 0 && !CPU_ISSET(last, &allowed)) --last;
  CPU_ZERO(&allowed);
  CPU_SET(last, &allowed);
  sched_setaffinity(0, sizeof allowed, &allowed);
}

bool wanted(const Figure& figure, const Options& options) {
  return options.only.empty() ||
         std::find(options.only.begin(), options.only.end(), figure.name) != options.only.end();
}

bench::Findings told(const Options& options) {
  bench::Findings findings;
  if (options.armBytes > 0) findings["arm-size"] = bench::alone(options.armBytes);
  return findings;
}

bool run(const Options& options) {
  bench::Findings findings = told(options);
  bench::Report report(options.factor);
  bench::Report::printHead();
  for (const Figure& figure : figures()) {
    if (!wanted(figure, options)) continue;
    if (!findings.contains(figure.name)) figure.measure(findings);
    report.add(figure, findings.at(figure.name));
  }
  if (!options.json.empty()) {
    std::ofstream file(options.json);
    file << report.json();
    if (!file.flush()) throw std::runtime_error(options.json + ": cannot be written");
  }
  return report.allHold();
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  try {
    Options options;
    int status = 0;
    if (!read(argc, argv, options, status)) return status;
    pinToOneProcessor();
    return run(options) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 1;
  }
}
