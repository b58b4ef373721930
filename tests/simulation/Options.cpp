#include "simulation/Options.h"

#include <stdexcept>
#include <string>

#include "simulation/Count.h"

namespace simulation {
namespace {

constexpr const char* kUsage = "usage: simulate [--seed N] [--steps N] [--lives N]";

std::uint64_t& placeOf(Options& options, std::string_view name) {
  if (name == "--seed") return options.seed;
  if (name == "--steps") return options.steps;
  if (name == "--lives") return options.lives;
  throw std::invalid_argument(kUsage);
}

}  // namespace

Options optionsIn(const std::vector<std::string_view>& words, std::uint64_t seed) {
  Options options;
  options.seed = seed;
  for (std::size_t i = 0; i < words.size(); i += 2) {
    std::uint64_t& place = placeOf(options, words[i]);
    if (i + 1 == words.size()) throw std::invalid_argument(kUsage);
    const auto number = countIn(words[i + 1]);
    if (!number || (*number == 0 && words[i] != "--seed")) {
      throw std::invalid_argument("simulate: " + std::string(words[i]) + " cannot be \"" +
                                  std::string(words[i + 1]) + "\"");
    }
    place = *number;
  }
  return options;
}

}  // namespace simulation
