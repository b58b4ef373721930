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

// Differs after jacks 17 and 42, in this order. Without jack 0 it has another difference.
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

TEST(SimulationReport, ShrinksToTheStepsThatCauseTheFault) {
  const auto shortest = shrunk(wrongAfterTwoJacks(jacks(1000)), wrongAfterTwoJacks);
  EXPECT_EQ(shortestRunText(shortest),
            "the shortest run that differs, from the first start:\n"
            "  jack event 0 1\n  jack event 17 1\n  jack event 42 1\n"
            "where\n  expected:\n    good\n  actual:\n    bad\n");
}

TEST(SimulationReport, ShrinkingStopsAtItsTimeLimit) {
  const auto never = [](const Steps&) -> simulation::Run { std::abort(); };
  EXPECT_EQ(shrunk(wrongAfterTwoJacks(jacks(1000)), never, {}).steps.size(), 43U);
}

TEST(SimulationReport, PrintsSeedStepAndBothSides) {
  EXPECT_EQ(differenceText(99, wrongAfterTwoJacks(jacks(100))),
            "seed 99, step 43: jack event 42 1\n"
            "  expected:\n    good\n  actual:\n    bad\n");
  EXPECT_EQ(differenceText(3, {{}, Difference{0, {"good"}, {}}, 0}),
            "seed 3, step 0: the first start\n"
            "  expected:\n    good\n  actual:\n    (no more lines)\n");
}

TEST(SimulationReport, ShowsOnlyTheLinesThatDiffer) {
  EXPECT_THAT(differenceText(1, wrongIn({"1", "2", "3", "end"}, {"one", "2", "three", "end"})),
              HasSubstr("expected:\n    1\n    3\n  actual:\n    one\n    three\n"));
  EXPECT_THAT(differenceText(1, wrongIn({"one", "two", "end"}, {"one", "two", "two", "end"})),
              HasSubstr("expected:\n    (no more lines)\n  actual:\n    two\n"));
}

TEST(SimulationReport, ShowsTheLastStepsOfALongRun) {
  const std::string text = shortestRunText({jacks(100), Difference{100, {"good"}, {"bad"}}, 0});
  EXPECT_THAT(text, HasSubstr("start:\n  40 steps, then\n  jack event 40 1\n"));
  EXPECT_THAT(text, HasSubstr("  jack event 99 1\nwhere\n  expected:\n    good\n"));
}

}  // namespace
}  // namespace simulation
