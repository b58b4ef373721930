// Kills a telephone's host again and again, and checks that it has kept what it acknowledged.

#include <chrono>
#include <cstdint>
#include <iostream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "apps/OptionParser.h"
#include "base/PrintableText.h"
#include "base/StandardOutput.h"
#include "powercut/PowerCuts.h"
#include "support/Interruption.h"
#include "verbs/UsageError.h"

namespace {

constexpr host::ExitStatus kStatuses[] = {
    {0, "all that was acknowledged was kept"},
    {1, "something was lost, or the host could not be run"},
    {2, "wrong option"},
    {128, "and the number of the signal that stopped it"},
};

struct Options {
  std::uint64_t seed = std::random_device{}();
  std::uint64_t cuts = 1000;
};

constexpr std::uint64_t kMostCuts = 1'000'000;

host::OptionParser parserInto(Options& options) {
  host::OptionParser parser(
      {"powercuts",
       "Kills a telephone's host again and again, and checks that it has kept "
       "what it acknowledged.",
       "", kStatuses});
  parser
      .addNumber("--seed", "N", "Seed of the moments", options.seed, 0,
                 std::numeric_limits<std::uint64_t>::max())
      .shownDefault = "a random one";
  parser.addNumber("--cuts", "N", "How often it is killed", options.cuts, 1, kMostCuts);
  return parser;
}

int run(const Options& options) {
  std::cout << "seed " << options.seed << std::endl;
  const auto begin = std::chrono::steady_clock::now();
  const support::Interruption interruption;
  powercut::PowerCuts telephone(options.seed);
  if (!telephone.cut(options.cuts)) {
    std::cout << telephone.failure() << '\n';
    return support::Interruption::statusOr(1);
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  std::cout << powercut::toText(telephone.figures()) << "; in " << took.count() << " s\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  const std::vector<std::string> words(argv + 1, argv + argc);
  const int status = parserInto(options).readToRun(words, std::cout) ? run(options) : 0;
  return status == 0 && !host::outputArrived("powercuts") ? 1 : status;
} catch (const host::UsageError& error) {
  std::cerr << host::errorLine("powercuts", error.what());
  return 2;
} catch (const std::exception& error) {
  std::cerr << "powercuts: " << error.what() << '\n';
  return support::Interruption::statusOr(1);
}
