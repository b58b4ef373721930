#include "Bench.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Repetitions.h"
#include "Report.h"
#include "apps/OptionParser.h"
#include "base/PrintableText.h"
#include "base/ProgressLine.h"
#include "verbs/DidYouMean.h"
#include "verbs/NamedRows.h"
#include "verbs/UsageError.h"

namespace bench {
namespace {

constexpr int kMostRounds = 10;

constexpr host::ExitStatus kStatuses[] = {
    {0, "all bounds are met"},
    {1, "one is not, or could not be measured"},
    {2, "wrong option"},
};

struct Options {
  double factor = 1;
  std::string commit;
  std::filesystem::path json;
  std::vector<std::string> only;

  [[nodiscard]] bool wants(const char* name) const {
    return only.empty() || std::find(only.begin(), only.end(), name) != only.end();
  }
};

// Returns an error text, empty if the value is valid.
std::string takeFactor(const std::string& word, double& factor) {
  double read = 0;
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, read);
  if (error != std::errc() || stop != end || !(read >= 1 && read <= 100)) {
    return host::quotedText(word) + " is not a number from 1 to 100";
  }
  factor = read;
  return "";
}

void requireFigure(const std::string& name, std::span<const Figure> figures) {
  if (host::rowNamed(figures, name) != nullptr) return;
  throw host::UsageError(
      "--only: " + host::quotedText(name) + " is not a figure" +
      host::suggestion(name, host::namesOf(figures), "; `bench --help` lists them"));
}

// "{three,count}", which tools/dev/compare.py reads.
std::string listOf(std::span<const Figure> figures) {
  std::string list;
  for (const std::string_view name : host::namesOf(figures)) {
    list.append(list.empty() ? "{" : ",").append(name);
  }
  return list + '}';
}

host::OptionParser parserInto(Options& options, std::span<const Figure> figures,
                              const std::string& onlyHelp) {
  host::OptionParser parser(
      {"bench", "Measures the clock, and compares each figure with its bound.", "", kStatuses});
  parser.add({"--commit", "TEXT", "The commit that is measured; written to the JSON",
              [&](const std::string& text) {
                options.commit = text;
                return std::string();
              }});
  parser.add({"--factor", "X", "Multiplies the bounds of times by this number, 1 to 100",
              [&](const std::string& word) { return takeFactor(word, options.factor); }, "1"});
  parser.addPath("--json", "Where to write the table as JSON", options.json);
  parser.add({"--only", "NAME", onlyHelp, [&, figures](const std::string& name) {
                requireFigure(name, figures);
                options.only.push_back(name);
                return std::string();
              }});
  return parser;
}

// Measures again while the bound is exceeded, because another program may have disturbed a round.
// Slower code exceeds it in each.
Measured measuredWithin(const Bound& bound, const Figure& figure) {
  for (int round = 1;; ++round) {
    Measured measured = repeat(figure);
    measured.rounds = round;
    if (bound.holds(measured.compared) || round == kMostRounds) return measured;
  }
}

void addTo(Report& report, const Figure& figure, double factor, host::ProgressLine& progress) {
  try {
    const Measured measured = measuredWithin(figure.bound.widened(factor), figure);
    progress.hide();
    report.add(figure, measured);
  } catch (const std::exception& error) {
    progress.hide();
    report.addFailure(figure, error.what());
  }
}

void requireGood(const std::ofstream& stream, const std::filesystem::path& file) {
  if (!stream) throw std::runtime_error(file.string() + ": cannot be written");
}

// The figures to measure.
std::vector<Figure> chosen(std::span<const Figure> figures, const Options& options) {
  std::vector<Figure> found;
  std::copy_if(figures.begin(), figures.end(), std::back_inserter(found),
               [&](const Figure& figure) { return options.wants(figure.name); });
  return found;
}

int measure(const std::vector<Figure>& figures, const Options& options, std::ostream& table,
            std::ostream* progress) {
  std::ofstream json(options.json);
  requireGood(json, options.json);
  Report report(options.factor, table);
  host::ProgressLine line(figures.size(), "figures", progress);
  for (std::size_t i = 0; i < figures.size(); ++i) {
    line.show(i);
    addTo(report, figures[i], options.factor, line);
  }
  json << report.json(options.commit) << std::flush;
  requireGood(json, options.json);
  table << "JSON: " << std::filesystem::proximate(options.json).string() << std::endl;
  return report.allHold() ? 0 : 1;
}

}  // namespace

int run(std::span<const std::string> words, std::span<const Figure> figures,
        const std::filesystem::path& json, std::ostream& table, std::ostream* progress) {
  Options options;
  options.json = json;
  const std::string onlyHelp = "Measure this figure, of " + listOf(figures) + "; may be repeated";
  host::OptionParser parser = parserInto(options, figures, onlyHelp);
  return parser.readToRun(words, table)
             ? measure(chosen(figures, options), options, table, progress)
             : 0;
}

}  // namespace bench
