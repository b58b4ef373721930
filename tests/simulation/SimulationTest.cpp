#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <random>

#include "simulation/Life.h"
#include "simulation/LotSteps.h"
#include "simulation/Report.h"
#include "simulation/SimulationFolder.h"

namespace simulation {
namespace {

// Each life is as long; the tests share the steps that were asked for.
constexpr std::size_t kLifeSteps = 2500;
constexpr std::size_t kFixedLots = 20;
constexpr std::size_t kNewLots = 10;

// Asked for a build, and in the environment for one run.
std::size_t stepsOfALot(const char* variable, std::size_t usual, std::size_t lots) {
  return lotSteps(std::getenv(variable), usual, lots);  // NOLINT(concurrency-mt-unsafe): one thread
}

Life again(const Steps& steps) {
  return live(steps);
}

// What went wrong stands in the output before the long search for the shortest way.
void showDifference(std::uint64_t seed, const Life& life) {
  std::cout << differenceText(seed, life) << std::flush;
  FAIL() << differenceText(seed, life) << wayText(shrunk(life, again));
}

void expectAgreement(std::uint64_t firstSeed, std::size_t steps) {
  for (std::size_t lived = 0; lived < steps; lived += kLifeSteps) {
    const std::uint64_t seed = firstSeed + lived / kLifeSteps;
    const Life life = live(seed, std::min(kLifeSteps, steps - lived));
    if (life.difference) return showDifference(seed, life);
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
  expectAgreement(GetParam() * 1000 + 1,
                  stepsOfALot("CLOCK_SIMULATION_STEPS", CLOCK_SIMULATION_STEPS, kFixedLots));
}
INSTANTIATE_TEST_SUITE_P(Lots, SimulationLot, testing::Range<std::size_t>(0, kFixedLots));

class SimulationNewLot : public SimulationLot {};

TEST_P(SimulationNewLot, OfANewSeedAgreesWithTheModel) {
  const std::uint64_t seed = std::random_device{}();
  std::cout << "new seed " << seed << ": ./dev simulate --seed " << seed << " --steps "
            << kLifeSteps << std::endl;
  expectAgreement(seed,
                  stepsOfALot("CLOCK_SIMULATION_NEW_STEPS", CLOCK_SIMULATION_NEW_STEPS, kNewLots));
}
INSTANTIATE_TEST_SUITE_P(Lots, SimulationNewLot, testing::Range<std::size_t>(0, kNewLots));

}  // namespace
}  // namespace simulation
