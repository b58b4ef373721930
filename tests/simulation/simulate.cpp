// simulate [--seed N] [--steps N] [--lives N]: random lives of the telephone's clock beside a model
// of it. Life n has the seed SEED + n. Exit status: 0 all agreed, 1 one did not, 2 usage. Standard
// output is the same to the byte for the same seed; the time it took goes to standard error.

#include <chrono>
#include <exception>
#include <iostream>
#include <random>
#include <stdexcept>

#include "simulation/Life.h"
#include "simulation/Options.h"
#include "simulation/Report.h"
#include "simulation/SimulationFolder.h"

namespace {

using Clock = std::chrono::steady_clock;

// True when model and telephone agreed to the end.
bool lived(std::uint64_t seed, std::uint64_t steps) {
  std::cout << "seed " << seed << ": " << std::flush;
  const simulation::Life life = simulation::live(seed, steps);
  std::cout << life.steps.size() << " steps, digest " << std::hex << life.digest << std::dec
            << std::endl;
  if (!life.difference) return true;
  std::cout << simulation::differenceText(seed, life) << std::flush;
  const simulation::Liver again = [](const simulation::Steps& some) {
    return simulation::live(some);
  };
  std::cout << simulation::wayText(simulation::shrunk(life, again));
  return false;
}

int simulate(const simulation::Options& options) {
  const simulation::SimulationFolder folder;
  const auto begin = Clock::now();
  for (std::uint64_t life = 0; life < options.lives; ++life) {
    if (!lived(options.seed + life, options.steps)) return 1;
  }
  const std::chrono::duration<double> took = Clock::now() - begin;
  const auto all = static_cast<double>(options.lives) * static_cast<double>(options.steps);
  std::cout << options.lives << " lives of " << options.steps << " steps agreed with the model"
            << std::endl;
  std::cerr << "in " << took.count() << " s, " << static_cast<std::uint64_t>(all / took.count())
            << " steps in each\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  return simulate(simulation::optionsIn({argv + 1, argv + argc}, std::random_device{}()));
} catch (const std::invalid_argument& error) {
  std::cerr << error.what() << '\n';
  return 2;
} catch (const std::exception& error) {
  std::cerr << "simulate: " << error.what() << '\n';
  return 1;
}
