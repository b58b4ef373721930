// Random runs of the telephone, compared with a reference. The same seed gives the same standard
// output, byte for byte.

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <system_error>
#include <vector>

#include "apps/OptionParser.h"
#include "base/PrintableText.h"
#include "base/StandardOutput.h"
#include "simulation/Run.h"
#include "support/WorkingFolder.h"
#include "verbs/UsageError.h"

namespace {

constexpr host::ExitStatus kStatuses[] = {
    {0, "all runs agreed with the reference"},
    {1, "a run did not, or could not be made"},
    {2, "wrong option"},
};

struct Options {
  std::uint64_t seed = std::random_device{}();
  std::uint64_t steps = 5000;
  std::uint64_t runs = 20;
};

constexpr std::uint64_t kMostSteps = 1'000'000'000;
constexpr std::uint64_t kMostRuns = 1'000'000;

host::OptionParser parserInto(Options& options) {
  host::OptionParser parser({"simulate",
                             "Runs a telephone with random steps, and compares it with a "
                             "reference. The same seed gives the same output.",
                             "", kStatuses});
  parser
      .addNumber("--seed", "N", "Seed of the first run; each further run has the next seed",
                 options.seed, 0, std::numeric_limits<std::uint64_t>::max())
      .shownDefault = "a random one";
  parser.addNumber("--steps", "N", "Steps of each run", options.steps, 1, kMostSteps);
  parser.addNumber("--runs", "N", "How many runs", options.runs, 1, kMostRuns);
  return parser;
}

// The child's current step, in shared memory that this program can read after the child has
// crashed.
struct CurrentStep {
  char text[600];
};
CurrentStep* g_step = nullptr;
volatile pid_t g_child = 0;

// Passes a signal on to the child, whose end is then reported.
void endChild(int signal) {
  if (g_child <= 0) _exit(128 + signal);
  kill(g_child, signal);
}

// SIGALRM ends the child at a step that takes longer.
constexpr unsigned int kLongestStepSeconds = 20;

void recordStep(std::uint64_t seed, const simulation::Run& run) {
  std::snprintf(g_step->text, sizeof g_step->text, "seed %llu, step %zu: %s",
                static_cast<unsigned long long>(seed), run.steps.size(),
                describe(run.steps.back()).c_str());
  alarm(kLongestStepSeconds);
}

// True when reference and telephone agreed to the end.
bool agrees(std::uint64_t seed, std::uint64_t steps) {
  std::cout << "seed " << seed << ": " << std::flush;
  const auto watch = [seed](const simulation::Run& run) { recordStep(seed, run); };
  const simulation::Run run = simulation::run(seed, steps, watch);
  std::cout << run.steps.size() << " steps, digest " << std::hex << run.digest << std::dec
            << std::endl;
  if (!run.difference) return true;
  std::cout << simulation::differenceText(seed, run) << std::flush;
  const auto again = [&](const simulation::Steps& some) { return simulation::run(some, watch); };
  std::cout << simulation::shortestRunText(simulation::shrunk(run, again)) << std::flush;
  return false;
}

// Runs in a child process, so that a crash can be reported.
bool agreesInChild(std::uint64_t seed, std::uint64_t steps) {
  g_child = fork();
  if (g_child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (g_child == 0) {
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, SIG_DFL);
    _exit(agrees(seed, steps) ? 0 : 1);
  }
  int status = 0;
  while (waitpid(g_child, &status, 0) < 0 && errno == EINTR) continue;
  g_child = 0;
  if (WIFSIGNALED(status)) {
    std::cerr << "\nsimulate: SIG" << sigabbrev_np(WTERMSIG(status)) << " in " << g_step->text
              << std::endl;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

int simulate(const Options& options) {
  const support::WorkingFolder folder(support::folderInMemory());
  void* const shared =
      mmap(nullptr, sizeof(CurrentStep), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
  g_step = new (shared) CurrentStep{};
  for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, endChild);
  for (std::uint64_t run = 0; run < options.runs; ++run)
    if (!agreesInChild(options.seed + run, options.steps)) return 1;
  std::cout << options.runs << " runs of " << options.steps << " steps agreed with the reference"
            << std::endl;
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  const std::vector<std::string> words(argv + 1, argv + argc);
  const int status = parserInto(options).readToRun(words, std::cout) ? simulate(options) : 0;
  return status == 0 && !host::outputArrived("simulate") ? 1 : status;
} catch (const host::UsageError& error) {
  std::cerr << host::errorLine("simulate", error.what());
  return 2;
} catch (const std::exception& error) {
  std::cerr << "simulate: " << error.what() << '\n';
  return 1;
}
