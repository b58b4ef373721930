// The n-th call fails, for n = 1, 2, 3 ... until a telephone's life meets no failure any more.
#include <gtest/gtest.h>

#include <cstdio>
#include <ostream>
#include <regex>

#include "faults/FaultPoints.h"
#include "faults/Life.h"
#include "faults/PlanFile.h"

namespace faults {

void PrintTo(const FaultPoint& point, std::ostream* out) {
  *out << point.name;
}

namespace {

std::string testName(const ::testing::TestParamInfo<FaultPoint>& info) {
  std::string name;
  for (const char letter : std::string(info.param.name)) {
    if (letter != ' ' && letter != ',') name += letter;
  }
  return name;
}

class NthCallFails : public ::testing::TestWithParam<FaultPoint> {
 protected:
  // True when there was an n-th call.
  static bool liveWithFailure(const FaultPoint& point, std::uint64_t nth) {
    Life life;
    PlanFile plan(life.host().folder() / "plan");
    plan.arm(point.call, point.error, nth);
    life.live(plan);
    const bool failed = plan.disarm();
    life.lookBack();
    EXPECT_EQ(life.complaints(), std::vector<std::string>{});
    expectInTheLog(point, life, failed);
    if (::testing::Test::HasFailure()) std::printf("the log:\n%s", life.log().c_str());
    return failed;
  }

 private:
  // The words of a failure, and only of one: a life that met none must not have them either.
  static void expectInTheLog(const FaultPoint& point, const Life& life, bool failed) {
    if (failed && point.quietAtTheEnd && life.failedAtAnEnd()) return;
    EXPECT_EQ(std::regex_search(life.log(), std::regex(point.logged)), failed)
        << "the log of a life " << (failed ? "with" : "without") << " a failure";
  }
};

TEST_P(NthCallFails, AndNothingAcknowledgedIsLost) {
  std::uint64_t nth = 1;
  while (!HasFailure()) {
    SCOPED_TRACE(std::string(GetParam().name) + " number " + std::to_string(nth));
    if (!liveWithFailure(GetParam(), nth)) break;
    ++nth;
  }
  std::printf("%s: each of %llu failed once\n", GetParam().name,
              static_cast<unsigned long long>(nth - 1));
  EXPECT_GT(nth, 1U) << "the life has no such call";
}

INSTANTIATE_TEST_SUITE_P(Each, NthCallFails,
                         ::testing::ValuesIn(faultPoints().begin(), faultPoints().end()), testName);

}  // namespace
}  // namespace faults
