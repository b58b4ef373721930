// A telephone whose power is cut keeps what it has promised; see ./dev powercuts for more of them.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "powercut/PowerCuts.h"

namespace powercut {
namespace {

TEST(PowerCut, KeepsWhatWasPromised) {
  const std::uint64_t seed = std::random_device{}();
  PowerCuts telephone(seed);
  EXPECT_TRUE(telephone.cut(CLOCK_POWER_CUTS)) << "seed " << seed << ": " << telephone.complaint();
  std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed),
              toText(telephone.figures()).c_str());
  EXPECT_GT(telephone.figures().setsAcknowledged, 0U);
  EXPECT_GT(telephone.figures().timesAcknowledged, 0U);
  EXPECT_GT(telephone.figures().scripts, 0U);
}

TEST(SavedTimes, AllowWhatWasAcknowledgedLastAndWhatCameSince) {
  SavedTimes times;
  EXPECT_TRUE(times.allows("2016-06-16T00:00:00+00:00"));
  EXPECT_FALSE(times.allows("2026-01-01T00:16:40+00:00"));
  const std::string first = times.next();
  EXPECT_EQ(first, "2026-01-01T00:16:40+00:00");
  EXPECT_TRUE(times.allows("2016-06-16T00:00:00+00:00"));
  EXPECT_TRUE(times.allows(first));
  times.acknowledged(first);
  EXPECT_FALSE(times.allows("2016-06-16T00:00:00+00:00"));
  const std::string second = times.next();
  EXPECT_TRUE(times.allows(first));
  EXPECT_TRUE(times.allows(second));
  times.found(first);
  EXPECT_FALSE(times.allows(second));
}

}  // namespace
}  // namespace powercut
