#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>

#include "simulation/Run.h"
#include "support/FileContent.h"
#include "support/WorkingFolder.h"

namespace simulation {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// All runs have the same length. The build or an environment variable sets the total number of
// steps, which the tests share.
constexpr std::size_t kRunSteps = 2500;
constexpr std::size_t kFixedLots = 20;
constexpr std::size_t kNewLots = 10;

// Prints the difference first, because the search for the shortest run takes long.
void showDifference(std::uint64_t seed, const Run& wrong) {
  std::cout << differenceText(seed, wrong) << std::flush;
  const auto again = [](const Steps& steps) { return run(steps); };
  FAIL() << differenceText(seed, wrong) << shortestRunText(shrunk(wrong, again));
}

// Also fails without a step, so that a wrong variable does not go unnoticed.
void expectAgreement(std::uint64_t firstSeed, const char* variable, std::size_t usual,
                     std::size_t lots) {
  const char* const asked = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): one thread
  const std::size_t steps = (asked == nullptr ? usual : std::strtoul(asked, nullptr, 10)) / lots;
  EXPECT_GT(steps, 0U) << variable << " is not a number of steps for " << lots << " lots";
  for (std::size_t taken = 0; taken < steps; taken += kRunSteps) {
    const std::uint64_t seed = firstSeed + taken / kRunSteps;
    const Run result = run(seed, std::min(kRunSteps, steps - taken));
    if (result.difference) return showDifference(seed, result);
  }
}

class Simulation : public testing::Test {
 private:
  const support::WorkingFolder m_folder{support::folderInMemory()};
};

class SimulationLot : public Simulation, public testing::WithParamInterface<std::size_t> {};

TEST_F(Simulation, SameSeedGivesTheSameRun) {
  const auto once = run(42, 1500);
  EXPECT_EQ(once.digest, run(42, 1500).digest);
  EXPECT_NE(once.digest, run(43, 1500).digest);
}

TEST_F(Simulation, StepsAloneGiveTheSameRun) {
  const auto once = run(44, 1500);
  EXPECT_EQ(once.digest, run(once.steps).digest);
}

TEST_F(Simulation, RunsTakeEveryKindOfStep) {
  std::array<int, static_cast<std::size_t>(Act::restart) + 1> taken{};
  for (const Step& step : run(45, 4000).steps) ++taken[static_cast<std::size_t>(step.act)];
  EXPECT_THAT(taken, testing::Each(testing::Gt(0)));
}

TEST_F(Simulation, ExceptionIsADifference) {
  const auto thrown = run(Steps{{Act::idle}, {Act::service, {1}, {"none"}}});
  ASSERT_TRUE(thrown.difference);
  EXPECT_EQ(thrown.difference->step, 2U);
  EXPECT_THAT(thrown.difference->actual.back(), HasSubstr("threw: "));
}

TEST_P(SimulationLot, OfFixedSeedsAgreesWithTheReference) {
  expectAgreement(GetParam() * 1000 + 1, "CLOCK_SIMULATION_STEPS", CLOCK_SIMULATION_STEPS,
                  kFixedLots);
}
INSTANTIATE_TEST_SUITE_P(Lots, SimulationLot, testing::Range<std::size_t>(0, kFixedLots));

class SimulationNewLot : public SimulationLot {};

TEST_P(SimulationNewLot, OfANewSeedAgreesWithTheReference) {
  const std::uint64_t seed = std::random_device{}();
  std::cout << "new seed " << seed << ": ./dev simulate --seed " << seed << " --steps " << kRunSteps
            << std::endl;
  expectAgreement(seed, "CLOCK_SIMULATION_NEW_STEPS", CLOCK_SIMULATION_NEW_STEPS, kNewLots);
}
INSTANTIATE_TEST_SUITE_P(Lots, SimulationNewLot, testing::Range<std::size_t>(0, kNewLots));

// The program's output, followed by its exit status.
std::string simulate(const std::string& words, const std::string& before = "") {
  const std::string file = testing::TempDir() + "simulate-" + std::to_string(getpid());
  const std::string command =
      before + CLOCK_SIMULATE " " + words + " >" + file + " 2>&1; echo $? >>" + file;
  EXPECT_EQ(std::system(command.c_str()), 0);  // NOLINT(concurrency-mt-unsafe)
  std::string text = support::contentOf(file);
  std::filesystem::remove(file);
  return text;
}

TEST(Simulate, PrintsTheSameBytesForTheSameSeed) {
  const std::string text = simulate("--runs 2 --steps 50 --seed 5");
  EXPECT_THAT(text, StartsWith("seed 5: 50 steps, digest "));
  EXPECT_THAT(text, EndsWith("\n2 runs of 50 steps agreed with the reference\n0\n"));
  EXPECT_EQ(simulate("--steps 50 --seed 5 --runs 2"), text);
}

// The processor time runs out in the middle of a run.
TEST(Simulate, PrintsTheStepOfACrash) {
  const std::string text =
      simulate("--runs 1 --steps 100000000 --seed 5", "ulimit -c 0; ulimit -S -t 1; ");
  EXPECT_THAT(text, testing::ContainsRegex("\nsimulate: SIGXCPU in seed 5, step [0-9]+: [^\n]+\n"));
  EXPECT_THAT(text, EndsWith("\n1\n"));
}

TEST(Simulate, RefusesInOneLine) {
  const std::string hint = "; `simulate --help` lists the options\n2\n";
  for (const char* const number : {"0", "abc", "5x", "", "-5", "+5", "1000000001"}) {
    EXPECT_EQ(simulate("--steps '" + std::string(number) + "'"),
              "simulate: --steps: \"" + std::string(number) +
                  "\" is not a whole number from 1 to 1000000000" + hint);
  }
  EXPECT_EQ(simulate("--wat 5"), "simulate: unknown option \"--wat\"" + hint);
  EXPECT_EQ(simulate("--sed 5"),
            "simulate: unknown option \"--sed\"; did you mean \"--seed\"?\n2\n");
  EXPECT_EQ(simulate("5 5"), "simulate: \"5\" is not an option" + hint);
  EXPECT_EQ(simulate("--runs 1 --steps"),
            "simulate: --steps: its value is missing; write --steps N" + hint);
}

}  // namespace
}  // namespace simulation
