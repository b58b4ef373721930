#include "Saturate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

constexpr std::int32_t kLowest32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kLowest64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kHighest64 = std::numeric_limits<std::int64_t>::max();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

TEST(Saturate, NumbersBeyondTheTypeStopAtItsLimits) {
  for (const std::int32_t number : {0, 1, -1, 86400, kLowest32, kLowest32 + 1, kHighest32})
    EXPECT_EQ(saturate<std::int32_t>(number), number);
  EXPECT_EQ(saturate<std::int32_t>(std::int64_t{kHighest32} + 1), kHighest32);
  EXPECT_EQ(saturate<std::int32_t>(std::int64_t{kLowest32} - 1), kLowest32);
  EXPECT_EQ(saturate<std::int32_t>(kHighest64), kHighest32);
  EXPECT_EQ(saturate<std::int32_t>(kLowest64), kLowest32);
  EXPECT_EQ(saturate<std::uint32_t>(-1), 0U);
  EXPECT_EQ(saturate<std::uint32_t>(kLowest64), 0U);
  EXPECT_EQ(saturate<std::uint32_t>(4294967295), 4294967295U);
  EXPECT_EQ(saturate<std::uint32_t>(4294967296), 4294967295U);
}

TEST(Saturate, SumStopsAtTheLimitsOfInt) {
  EXPECT_EQ(saturatedSum(1, 2), 3);
  EXPECT_EQ(saturatedSum(kHighest32, 0), kHighest32);
  EXPECT_EQ(saturatedSum(kHighest32, 1), kHighest32);
  EXPECT_EQ(saturatedSum(kLowest32, -1), kLowest32);
  EXPECT_EQ(saturatedSum(kLowest32, kHighest32), -1);
}

// The lowest int is left out, so that the result can be negated.
TEST(Saturate, TruncatesTowardZeroToANumberThatCanBeNegated) {
  const struct {
    double number;
    std::int32_t truncated;
  } table[] = {{0.0, 0},
               {0.9, 0},
               {-0.9, 0},
               {1.0, 1},
               {1.999, 1},
               {-1.999, -1},
               {-330.0, -330},
               {2147483646.5, 2147483646},
               {-2147483646.5, -2147483646},
               {2147483647.0, kHighest32},
               {2147483648.0, kHighest32},
               {HUGE_VAL, kHighest32},
               {-2147483647.0, -kHighest32},
               {-2147483648.0, -kHighest32},
               {-2147483649.0, -kHighest32},
               {-HUGE_VAL, -kHighest32},
               {kNotANumber, 0},
               {-kNotANumber, 0}};
  for (const auto& row : table) EXPECT_EQ(truncated(row.number), row.truncated) << row.number;
}

TEST(Saturate, FloatIsTheNearestAndInfiniteBeyondTheRange) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const struct {
    double number;
    float nearest;
  } table[] = {{0.0, 0.0F},
               {5.75, 5.75F},
               {-0.1, -0.1F},
               {3.4028234663852886e38, std::numeric_limits<float>::max()},
               {-3.4028234663852886e38, std::numeric_limits<float>::lowest()},
               {1e39, kInfinity},
               {-1e39, -kInfinity},
               {HUGE_VAL, kInfinity},
               {-HUGE_VAL, -kInfinity}};
  for (const auto& row : table) EXPECT_EQ(toFloat(row.number), row.nearest) << row.number;
  EXPECT_TRUE(std::isnan(toFloat(kNotANumber)));
}

}  // namespace
