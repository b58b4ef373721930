#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "simulation/Life.h"
#include "simulation/SimulationFolder.h"

namespace simulation {
namespace {

// Each life is as long; the tests share the steps that were asked for.
constexpr std::size_t kLifeSteps = 2500;
constexpr std::size_t kFixedLots = 20;
constexpr std::size_t kNewLots = 10;

// How many steps to live: set for a build, and in the environment for one run.
std::size_t stepsFrom(const char* variable, std::size_t usual) {
  const char* const text = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): one thread
  return text == nullptr ? usual : std::strtoul(text, nullptr, 10);
}

Life again(const Steps& steps) {
  return live(steps);
}

void expectAgreement(std::uint64_t firstSeed, std::size_t steps) {
  for (std::size_t lived = 0; lived < steps; lived += kLifeSteps) {
    const std::uint64_t seed = firstSeed + lived / kLifeSteps;
    const Life life = live(seed, std::min(kLifeSteps, steps - lived));
    if (life.difference) FAIL() << report(seed, life, shrunk(life, again));
  }
}

class Simulation : public testing::Test {
 private:
  const SimulationFolder m_folder;
};

class SimulationLot : public Simulation, public testing::WithParamInterface<std::size_t> {};

TEST_F(Simulation, TheSameSeedGivesTheSameLifeToTheByte) {
  const Life life = live(42, 1500);
  EXPECT_EQ(life.digest, live(42, 1500).digest);
  EXPECT_NE(life.digest, live(43, 1500).digest);
}

TEST_F(Simulation, ItsStepsAloneGiveTheSameLife) {
  const Life life = live(44, 1500);
  EXPECT_EQ(life.digest, live(life.steps).digest);
}

TEST_F(Simulation, EveryStepCanBeRead) {
  for (const Step& step : live(45, 3000).steps) ASSERT_FALSE(describe(step).empty());
}

TEST_P(SimulationLot, OfFixedSeedsAgreesWithTheModel) {
  const std::size_t steps = stepsFrom("CLOCK_SIMULATION_STEPS", CLOCK_SIMULATION_STEPS);
  expectAgreement(GetParam() * 1000 + 1, steps / kFixedLots);
}
INSTANTIATE_TEST_SUITE_P(Lots, SimulationLot, testing::Range<std::size_t>(0, kFixedLots));

class SimulationNewLot : public SimulationLot {};

TEST_P(SimulationNewLot, OfANewSeedAgreesWithTheModel) {
  const std::size_t steps = stepsFrom("CLOCK_SIMULATION_NEW_STEPS", CLOCK_SIMULATION_NEW_STEPS);
  const std::uint64_t seed = std::random_device{}();
  std::cout << "new seed " << seed << ": ./dev simulate --seed " << seed << " --steps "
            << kLifeSteps << "\n";
  expectAgreement(seed, steps / kNewLots);
}
INSTANTIATE_TEST_SUITE_P(Lots, SimulationNewLot, testing::Range<std::size_t>(0, kNewLots));

// A life that goes wrong as soon as jacks 17 and 42 have been told, in this order.
Life wrongAfterTwoJacks(const Steps& steps) {
  Life life;
  bool first = false;
  for (const Step& step : steps) {
    life.steps.push_back(step);
    first = first || step.numbers[0] == 17;
    if (first && step.numbers[0] == 42) {
      life.difference = Difference{life.steps.size(), {"good"}, {"bad"}};
      break;
    }
  }
  return life;
}

Steps jacks(std::int64_t count) {
  Steps steps;
  for (std::int64_t plug = 0; plug < count; ++plug) steps.push_back({Act::jack, {plug, 1}, {}, {}});
  return steps;
}

TEST(SimulationShrinking, LeavesTheStepsThatMatter) {
  const Life shortest = shrunk(wrongAfterTwoJacks(jacks(1000)), wrongAfterTwoJacks);
  ASSERT_EQ(shortest.steps.size(), 2U);
  EXPECT_EQ(shortest.steps[0].numbers[0], 17);
  EXPECT_EQ(shortest.steps[1].numbers[0], 42);
}

TEST(SimulationShrinking, ShowsSeedStepBothSidesAndTheShortestWay) {
  const Life life = wrongAfterTwoJacks(jacks(100));
  const std::string text = report(99, life, shrunk(life, wrongAfterTwoJacks));
  for (const char* const part :
       {"seed 99", "step 43", "good", "bad", "jack event 17 1", "jack event 42 1"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
  }
}

}  // namespace
}  // namespace simulation
