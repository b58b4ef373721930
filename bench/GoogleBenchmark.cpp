#include "GoogleBenchmark.h"

#include <optional>
#include <stdexcept>
#include <vector>

namespace bench {
namespace {

constexpr double kSecondsEach = 0.02;

// Keeps the one figure of a run and prints nothing. A body reports no errors of its own: it throws.
class Keeper : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) m_nanoseconds = run.GetAdjustedCPUTime();
  }
  [[nodiscard]] std::optional<double> nanoseconds() const { return m_nanoseconds; }

 private:
  std::optional<double> m_nanoseconds;
};

const Body* g_body = nullptr;  // what is measured now

void runBody(benchmark::State& state) {
  (*g_body)(state);
}
BENCHMARK(runBody)->MinTime(kSecondsEach)->Unit(benchmark::kNanosecond);

}  // namespace

double processorNanoseconds(const Body& body) {
  g_body = &body;
  Keeper keeper;
  benchmark::RunSpecifiedBenchmarks(&keeper, "runBody");
  if (!keeper.nanoseconds()) throw std::logic_error("Google Benchmark has run nothing");
  return *keeper.nanoseconds();
}

}  // namespace bench
