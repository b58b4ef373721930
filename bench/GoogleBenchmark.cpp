#include "GoogleBenchmark.h"

#include <stdexcept>
#include <vector>

namespace bench {
namespace {

constexpr double kSecondsEach = 0.02;

// Keeps the one figure of a run and prints nothing.
class Keeper : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) throw std::runtime_error(run.error_message);
      m_nanoseconds = run.GetAdjustedCPUTime();
    }
  }
  [[nodiscard]] double nanoseconds() const { return m_nanoseconds; }

 private:
  double m_nanoseconds = 0;
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
  if (benchmark::RunSpecifiedBenchmarks(&keeper, "runBody") != 1) {
    throw std::logic_error("Google Benchmark has run nothing");
  }
  return keeper.nanoseconds();
}

}  // namespace bench
