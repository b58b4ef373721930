#include <gmock/gmock.h>

#include <string>

#include "simulation/Life.h"
#include "simulation/Report.h"

namespace simulation {
namespace {

using testing::HasSubstr;
using testing::Not;

Steps jacks(std::int64_t count) {
  Steps steps;
  for (std::int64_t plug = 0; plug < count; ++plug) steps.push_back({Act::jack, {plug, 1}, {}, {}});
  return steps;
}

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

// The same, and it goes wrong in another way where the first step is not there.
Life wrongInTwoWays(const Steps& steps) {
  if (!steps.empty() && steps[0].numbers[0] == 0) return wrongAfterTwoJacks(steps);
  return {steps, Difference{steps.size(), {"fine"}, {"poor"}}, 0};
}

// Every step is needed.
Life wrongAfterAHundredJacks(const Steps& steps) {
  Life life{steps, {}, 0};
  if (steps.size() >= 100) life.difference = Difference{100, {"good"}, {"bad"}};
  return life;
}

Life wrongIn(Lines expected, Lines actual) {
  return {jacks(1), Difference{1, std::move(expected), std::move(actual)}, 0};
}

TEST(SimulationShrinking, LeavesTheStepsThatMatter) {
  const Life shortest = shrunk(wrongAfterTwoJacks(jacks(1000)), wrongAfterTwoJacks);
  ASSERT_EQ(shortest.steps.size(), 2U);
  EXPECT_EQ(shortest.steps[0].numbers[0], 17);
  EXPECT_EQ(shortest.steps[1].numbers[0], 42);
}

TEST(SimulationShrinking, DoesNotSlideToAnotherFault) {
  const Life shortest = shrunk(wrongInTwoWays(jacks(1000)), wrongInTwoWays);
  ASSERT_EQ(shortest.steps.size(), 3U);
  EXPECT_EQ(shortest.difference->actual, Lines{"bad"});
}

TEST(SimulationShrinking, EndsWhenItsTimeIsOver) {
  int lived = 0;
  const Liver again = [&lived](const Steps& steps) {
    ++lived;
    return wrongAfterTwoJacks(steps);
  };
  EXPECT_EQ(shrunk(wrongAfterTwoJacks(jacks(1000)), again, {}).steps.size(), 43U);
  EXPECT_EQ(lived, 0);
}

TEST(SimulationReport, TellsSeedStepAndBothSides) {
  const std::string text = differenceText(99, wrongAfterTwoJacks(jacks(100)));
  EXPECT_EQ(text,
            "seed 99, step 43 of its life: jack event 42 1\n"
            "  must be:\n    good\n  is:\n    bad\n");
}

TEST(SimulationReport, TellsAFirstStartThatWentWrong) {
  const Life life{{}, Difference{0, {"good"}, {}}, 0};
  EXPECT_EQ(differenceText(3, life),
            "seed 3, step 0 of its life: the first start\n"
            "  must be:\n    good\n  is:\n    (nothing more)\n");
}

TEST(SimulationReport, ShowsTheLinesThatDifferAndNoOthers) {
  Lines expected, actual;
  for (int line = 0; line < 32; ++line) {
    expected.push_back("line " + std::to_string(line));
    actual.push_back(line % 31 == 0 ? "other " + std::to_string(line) : expected.back());
  }
  EXPECT_THAT(differenceText(1, wrongIn(expected, actual)),
              HasSubstr("must be:\n    line 0\n    line 31\n  is:\n    other 0\n    other 31\n"));
}

TEST(SimulationReport, ShowsTheLinesThatOneSideHasAlone) {
  EXPECT_THAT(differenceText(1, wrongIn({"one", "two", "end"}, {"one", "two", "two", "end"})),
              HasSubstr("must be:\n    (nothing more)\n  is:\n    two\n"));
  EXPECT_THAT(differenceText(1, wrongIn({"one", "two", "three"}, {"one"})),
              HasSubstr("must be:\n    two\n    three\n  is:\n    (nothing more)\n"));
}

TEST(SimulationReport, ShowsTheLastStepsOfALongWay) {
  const std::string text = wayText(wrongAfterAHundredJacks(jacks(100)));
  EXPECT_THAT(text, HasSubstr("start:\n  40 steps, and then\n  jack event 40 1\n"));
  EXPECT_THAT(text, HasSubstr("  jack event 99 1\nwhere\n  must be:\n    good\n"));
  EXPECT_THAT(wayText(wrongAfterTwoJacks(jacks(43))), Not(HasSubstr("and then")));
}

TEST(SimulationReport, FaultsDifferByHowTheirLinesBegin) {
  const auto fault = [](Lines expected, Lines actual) {
    return faultOf({1, std::move(expected), std::move(actual)});
  };
  EXPECT_EQ(fault({"same", "time 12:30"}, {"same", "time 12:31"}),
            fault({"time 9:05"}, {"time 10:05"}));
  EXPECT_EQ(fault({"Ann hears time 1:2:3"}, {}), fault({"Ann hears date 1.2.3"}, {}));
  EXPECT_NE(fault({"time 12:30"}, {"time 12:31"}), fault({"date 12.3."}, {"date 12.4."}));
  EXPECT_NE(fault({"time 12:30"}, {}), fault({}, {"time 12:30"}));
  EXPECT_NE(fault({"time 12:30"}, {"time 12:31"}), fault({"time 12:30"}, {"threw: map"}));
}

}  // namespace
}  // namespace simulation
