// simulate [--seed N] [--steps N] [--lives N]: random lives of the telephone's clock beside a model
// of it. Life n has the seed SEED + n. Exit status: 0 all agreed, 1 one did not, 2 usage.

#include <charconv>
#include <chrono>
#include <cstring>
#include <iostream>
#include <random>
#include <string_view>

#include "simulation/Life.h"
#include "simulation/SimulationFolder.h"

namespace {

struct Options {
  std::uint64_t seed = std::random_device{}();
  std::uint64_t steps = 5000;
  std::uint64_t lives = 20;
};

bool read(std::string_view text, std::uint64_t& number) {
  const auto end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end;
}

bool parse(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; i += 2) {
    const std::string_view name = argv[i];
    std::uint64_t* const number = name == "--seed"    ? &options.seed
                                  : name == "--steps" ? &options.steps
                                  : name == "--lives" ? &options.lives
                                                      : nullptr;
    if (number == nullptr || i + 1 == argc || !read(argv[i + 1], *number)) return false;
  }
  return true;
}

// True when model and telephone agreed to the end.
bool lived(std::uint64_t seed, std::uint64_t steps) {
  const simulation::Life life = simulation::live(seed, steps);
  std::cout << "seed " << seed << ": " << life.steps.size() << " steps, digest " << std::hex
            << life.digest << std::dec << std::endl;
  if (!life.difference) return true;
  const simulation::Liver again = [](const simulation::Steps& some) {
    return simulation::live(some);
  };
  std::cout << simulation::report(seed, life, simulation::shrunk(life, again));
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!parse(argc, argv, options)) {
    std::cerr << "usage: simulate [--seed N] [--steps N] [--lives N]\n";
    return 2;
  }
  const simulation::SimulationFolder folder;
  const auto begin = std::chrono::steady_clock::now();
  for (std::uint64_t life = 0; life < options.lives; ++life) {
    if (!lived(options.seed + life, options.steps)) return 1;
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  std::cout << options.lives << " lives of " << options.steps << " steps agreed with the model, in "
            << took.count() << " s\n";
  return 0;
}
