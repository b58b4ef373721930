// The rows of bad-inputs.txt that a host refuses.
#include <gtest/gtest.h>

#include "integration/RestartableHost.h"
#include "scenario/ScenarioWords.h"
#include "support/BadInputs.h"

namespace integration {
namespace {

TEST(BadInputs, AreRefusedByTheHostWithTheirLine) {
  RunningHost host;
  std::size_t rows = 0;
  for (const auto& [program, input, status, line] : support::badInputs()) {
    if (status != 1) continue;
    ++rows;
    const Outcome outcome = host.ctl(host::splitScenarioLine(input));
    EXPECT_EQ(outcome.status, status) << input;
    EXPECT_EQ(outcome.err, line + '\n') << input;
    EXPECT_EQ(outcome.out, "") << input;
  }
  EXPECT_GT(rows, 10U);
}

}  // namespace
}  // namespace integration
