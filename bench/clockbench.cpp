// Measures the speed, memory and disk writes of the clock against minimal programs.
#include <sched.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "Bench.h"
#include "FigureTable.h"
#include "base/PrintableText.h"
#include "base/ProgressLine.h"
#include "base/StandardOutput.h"
#include "verbs/UsageError.h"

namespace {

// The caller's environment may be large, which costs time at each start.
void clearEnvironment() {
  const char* const folder = getenv("TMPDIR");
  const std::string kept = folder == nullptr ? "" : folder;
  clearenv();
  if (!kept.empty()) setenv("TMPDIR", kept.c_str(), 1);
}

void requireOptimised() {
#if !defined(__OPTIMIZE__)
  throw std::logic_error("built without optimisation; build with -O2");
#endif
}

// From now on this process and its children run on the last processor that it may use.
void pinToLastProcessor() {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  sched_getaffinity(0, sizeof allowed, &allowed);
  std::size_t last = CPU_SETSIZE - 1;
  while (last > 0 && !CPU_ISSET(last, &allowed)) --last;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(last, &one);
  if (sched_setaffinity(0, sizeof one, &one) == 0) return;
  throw std::system_error(errno, std::generic_category(),
                          "cannot pin the benchmark to processor " + std::to_string(last));
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  try {
    std::ostream* const progress = host::showsProgress(STDERR_FILENO) ? &std::cerr : nullptr;
    requireOptimised();
    clearEnvironment();
    pinToLastProcessor();
    const std::vector<std::string> words(argv + 1, argv + argc);
    const int status = bench::run(words, bench::figures(), BENCH_JSON, std::cout, progress);
    return status == 0 && !host::outputArrived("bench") ? 1 : status;
  } catch (const host::UsageError& error) {
    std::cerr << host::errorLine("bench", error.what());
    return 2;
  } catch (const std::exception& error) {
    std::cerr << host::errorLine("bench", error.what());
    return 1;
  }
}
