#include <gmock/gmock.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "simulation/Child.h"
#include "simulation/LotSteps.h"
#include "simulation/Options.h"

namespace simulation {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string complaint(const std::vector<std::string_view>& words) {
  try {
    static_cast<void>(optionsIn(words, 1));
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "none";
}

TEST(SimulationOptions, AreReadInAnyOrder) {
  const Options options = optionsIn({"--lives", "3", "--seed", "0", "--steps", "70"}, 9);
  EXPECT_EQ(options.seed, 0U);
  EXPECT_EQ(options.steps, 70U);
  EXPECT_EQ(options.lives, 3U);
}

TEST(SimulationOptions, HaveDefaults) {
  const Options options = optionsIn({}, 9);
  EXPECT_EQ(options.seed, 9U);
  EXPECT_EQ(options.steps, 5000U);
  EXPECT_EQ(options.lives, 20U);
}

TEST(SimulationOptions, ThatMeanNoLifeAreRefused) {
  EXPECT_EQ(complaint({"--lives", "0"}), "simulate: --lives cannot be \"0\"");
  EXPECT_EQ(complaint({"--steps", "0"}), "simulate: --steps cannot be \"0\"");
}

TEST(SimulationOptions, ThatAreNoNumbersAreRefused) {
  for (const char* const text :
       {"", "abc", "5x", " 5", "-5", "+5", "1e3", "18446744073709551616"}) {
    for (const char* const name : {"--seed", "--steps", "--lives"}) {
      EXPECT_EQ(complaint({name, text}),
                "simulate: " + std::string(name) + " cannot be \"" + text + "\"");
    }
  }
}

TEST(SimulationOptions, OfOtherNamesAreRefused) {
  for (const char* const name : {"--wat", "", "seed", "5"}) {
    EXPECT_THAT(complaint({name, "5"}), StartsWith("usage: simulate "));
  }
  EXPECT_THAT(complaint({"--lives"}), StartsWith("usage: simulate "));
  EXPECT_THAT(complaint({"--lives", "1", "--steps"}), StartsWith("usage: simulate "));
}

End simulateEnd(int descriptor, const char* lives) {
  return endOf(descriptor, [lives] {
    execl(CLOCK_SIMULATE, "simulate", "--seed", "5", "--steps", "50", "--lives", lives, nullptr);
    _exit(99);
  });
}

TEST(Simulate, RefusesInOneLine) {
  const End end = simulateEnd(STDERR_FILENO, "0");
  EXPECT_EQ(end.status, 2);
  EXPECT_EQ(end.text, "simulate: --lives cannot be \"0\"\n");
}

TEST(Simulate, SaysTheSameForTheSameSeedToTheByte) {
  const End once = simulateEnd(STDOUT_FILENO, "2");
  EXPECT_EQ(once.status, 0);
  EXPECT_THAT(once.text, AllOf(StartsWith("seed 5: 50 steps, digest "), HasSubstr("\nseed 6: "),
                               EndsWith("2 lives of 50 steps agreed with the model\n")));
  EXPECT_EQ(simulateEnd(STDOUT_FILENO, "2").text, once.text);
}

TEST(SimulationLotSteps, AreAskedForOrTheUsualOnes) {
  EXPECT_EQ(lotSteps(nullptr, 200000, 20), 10000U);
  EXPECT_EQ(lotSteps("400", 200000, 20), 20U);
  EXPECT_EQ(lotSteps("20", 200000, 20), 1U);
}

TEST(SimulationLotSteps, AreNeverNone) {
  for (const char* const asked : {"", "abc", "0", "19", "-5", "400 ", "1e3"}) {
    EXPECT_THROW(static_cast<void>(lotSteps(asked, 200000, 20)), std::invalid_argument) << asked;
  }
  EXPECT_THROW(static_cast<void>(lotSteps(nullptr, 19, 20)), std::invalid_argument);
}

}  // namespace
}  // namespace simulation
