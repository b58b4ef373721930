#include <gmock/gmock.h>

#include <cstdlib>

#include "simulation/Run.h"

namespace simulation {
namespace {

using testing::HasSubstr;

Steps jacks(std::int64_t count) {
  Steps steps;
  for (std::int64_t plug = 0; plug < count; ++plug) steps.push_back({Act::jack, {plug, 1}});
  return steps;
}

// Differs after jacks 17 and 42, in this order. Without jack 0 it differs in another way.
Run wrongAfterTwoJacks(const Steps& steps) {
  if (steps.empty() || steps[0].numbers[0] != 0)
    return {steps, Difference{steps.size(), {"fine"}, {"poor"}}, 0};
  Run run;
  bool first = false;
  for (const Step& step : steps) {
    run.steps.push_back(step);
    first = first || step.numbers[0] == 17;
    if (!first || step.numbers[0] != 42) continue;
    run.difference = Difference{run.steps.size(), {"good"}, {"bad"}};
    break;
  }
  return run;
}

Run wrongIn(Lines expected, Lines actual) {
  return {jacks(1), Difference{1, std::move(expected), std::move(actual)}, 0};
}

TEST(SimulationReport, ShrinksToTheStepsOfTheSameFault) {
  const auto shortest = shrunk(wrongAfterTwoJacks(jacks(1000)), wrongAfterTwoJacks);
  EXPECT_EQ(wayText(shortest),
            "the shortest run that differs, from a first start:\n"
            "  jack event 0 1\n  jack event 17 1\n  jack event 42 1\n"
            "where\n  must be:\n    good\n  is:\n    bad\n");
}

TEST(SimulationReport, ShrinkingEndsWhenItsTimeIsOver) {
  const auto never = [](const Steps&) -> simulation::Run { std::abort(); };
  EXPECT_EQ(shrunk(wrongAfterTwoJacks(jacks(1000)), never, {}).steps.size(), 43U);
}

TEST(SimulationReport, PrintsSeedStepAndBothSides) {
  EXPECT_EQ(differenceText(99, wrongAfterTwoJacks(jacks(100))),
            "seed 99, step 43: jack event 42 1\n"
            "  must be:\n    good\n  is:\n    bad\n");
  EXPECT_EQ(differenceText(3, {{}, Difference{0, {"good"}, {}}, 0}),
            "seed 3, step 0: the first start\n"
            "  must be:\n    good\n  is:\n    (nothing more)\n");
}

TEST(SimulationReport, ShowsOnlyTheLinesThatDiffer) {
  EXPECT_THAT(differenceText(1, wrongIn({"1", "2", "3", "end"}, {"one", "2", "three", "end"})),
              HasSubstr("must be:\n    1\n    3\n  is:\n    one\n    three\n"));
  EXPECT_THAT(differenceText(1, wrongIn({"one", "two", "end"}, {"one", "two", "two", "end"})),
              HasSubstr("must be:\n    (nothing more)\n  is:\n    two\n"));
}

TEST(SimulationReport, ShowsTheLastStepsOfALongRun) {
  const std::string text = wayText({jacks(100), Difference{100, {"good"}, {"bad"}}, 0});
  EXPECT_THAT(text, HasSubstr("start:\n  40 steps, and then\n  jack event 40 1\n"));
  EXPECT_THAT(text, HasSubstr("  jack event 99 1\nwhere\n  must be:\n    good\n"));
}

}  // namespace
}  // namespace simulation
