// simulate [--seed N] [--steps N] [--runs N]: random runs of the telephone, compared with a
// reference. Run n has the seed SEED + n. Exit status: 0 all agree, 1 one differs, 2 usage error.
// The same seed gives the same standard output, byte for byte.

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <map>
#include <new>
#include <random>
#include <stdexcept>
#include <system_error>

#include "simulation/Run.h"
#include "support/WorkingFolder.h"

namespace {

using Options = std::map<std::string, std::uint64_t>;

Options optionsIn(char** words) {
  Options options{{"--seed", std::random_device{}()}, {"--steps", 5000}, {"--runs", 20}};
  for (; *words != nullptr; words += 2) {
    const std::string option = *words;
    const std::string text = words[1] == nullptr ? "" : words[1];
    if (options.count(option) == 0 || words[1] == nullptr)
      throw std::invalid_argument("usage: simulate [--seed N] [--steps N] [--runs N]");
    std::uint64_t& number = options[option];
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = read.ec == std::errc() && read.ptr == text.data() + text.size();
    if (!whole || (number == 0 && option != "--seed"))
      throw std::invalid_argument("simulate: " + option + " cannot be \"" + text + "\"");
  }
  return options;
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
  const std::uint64_t runs = options.at("--runs"), steps = options.at("--steps");
  for (std::uint64_t run = 0; run < runs; ++run)
    if (!agreesInChild(options.at("--seed") + run, steps)) return 1;
  std::cout << runs << " runs of " << steps << " steps agreed with the reference" << std::endl;
  return 0;
}

}  // namespace

int main(int, char** argv) try {
  return simulate(optionsIn(argv + 1));
} catch (const std::invalid_argument& error) {
  std::cerr << error.what() << '\n';
  return 2;
} catch (const std::exception& error) {
  std::cerr << "simulate: " << error.what() << '\n';
  return 1;
}
