#include "Repetitions.h"

#include <benchmark/benchmark.h>

#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {
namespace {

constexpr const char* kValue = "value";
constexpr const char* kBaseline = "baseline";
constexpr const char* kCompared = "compared";

double comparedOf(const Sample& found, Bound::Kind kind) {
  if (!found.baseline) return found.value;
  return kind == Bound::Kind::differenceAtMost ? found.value - *found.baseline
                                               : found.value / *found.baseline;
}

void runOnce(const Figure& figure, benchmark::State& state) {
  while (state.KeepRunning()) {
    const Sample found = figure.measure();
    state.counters[kValue] = found.value;
    if (found.baseline) state.counters[kBaseline] = *found.baseline;
    state.counters[kCompared] = comparedOf(found, figure.bound.kind);
  }
}

// Skips the remaining repetitions after a failure.
void runUnlessFailed(const Figure& figure, benchmark::State& state, std::string& failure) {
  try {
    if (failure.empty()) return runOnce(figure, state);
  } catch (const std::exception& error) {
    failure = error.what();
  }
  state.SkipWithError(failure.c_str());
}

// Keeps the aggregates and prints nothing.
class Aggregates : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) m_counters[run.aggregate_name] = run.counters;
  }

  [[nodiscard]] Measured measured() const {
    const benchmark::UserCounters& median = m_counters.at("median");
    Measured measured{median.at(kValue), {}, median.at(kCompared), 0};
    if (median.contains(kBaseline)) measured.baseline = median.at(kBaseline);
    measured.noise = m_counters.at("cv").at(kCompared);
    return measured;
  }

 private:
  std::map<std::string, benchmark::UserCounters> m_counters;
};

}  // namespace

Measured repeat(const Figure& figure) {
  std::string failure;
  benchmark::RegisterBenchmark(
      figure.name, [&](benchmark::State& state) { runUnlessFailed(figure, state, failure); })
      ->Iterations(1)
      ->Repetitions(figure.repetitions);
  Aggregates aggregates;
  benchmark::RunSpecifiedBenchmarks(&aggregates);
  benchmark::ClearRegisteredBenchmarks();
  if (!failure.empty()) throw std::runtime_error(failure);
  return aggregates.measured();
}

}  // namespace bench
