#include "Growth.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "Rounds.h"

namespace {

using bench::growthOf;
using bench::kNumbers;
using bench::Order;

double exponentOfPower(double power) {
  return growthOf(
             [power](std::size_t count) { return 3 * std::pow(static_cast<double>(count), power); })
      .compared;
}

TEST(Growth, IsTheExponentOfTheCost) {
  EXPECT_NEAR(exponentOfPower(0), 0, 1e-9);
  EXPECT_NEAR(exponentOfPower(1), 1, 1e-9);
  EXPECT_NEAR(exponentOfPower(1.1), 1.1, 1e-9);
  EXPECT_NEAR(exponentOfPower(2), 2, 1e-9);
}

// A loop in a loop that costs a thousandth of the loop.
TEST(Growth, ShowsWhatIsSeenOnlyInLargeNumbers) {
  const auto cost = [](std::size_t count) {
    const auto number = static_cast<double>(count);
    return number + number * number / 1000;
  };
  EXPECT_GT(growthOf(cost).compared, 1.1);
}

TEST(Growth, GoesThroughAllNumbersInEachRound) {
  std::vector<std::size_t> asked;
  static_cast<void>(growthOf([&](std::size_t count) {
    asked.push_back(count);
    return 1.0;
  }));
  ASSERT_EQ(asked.size(), kNumbers.size() * bench::Rounds::kLeast);
  for (std::size_t i = 0; i < asked.size(); ++i) EXPECT_EQ(asked[i], kNumbers[i % kNumbers.size()]);
}

TEST(Growth, NeverGoesBackToFewer) {
  std::vector<std::size_t> asked;
  static_cast<void>(growthOf(
      [&](std::size_t count) {
        asked.push_back(count);
        return 1.0;
      },
      Order::onlyMore));
  ASSERT_EQ(asked.size(), kNumbers.size() * bench::Rounds::kLeast);
  EXPECT_TRUE(std::is_sorted(asked.begin(), asked.end()));
}

TEST(Growth, IsOfTheMedian) {
  int calls = 0;
  const auto disturbed = [&](std::size_t count) {
    return static_cast<double>(count) * (++calls % 3 == 0 ? 50 : 1);
  };
  EXPECT_NEAR(growthOf(disturbed, Order::onlyMore).compared, 1, 1e-9);
}

// Of a difference of two measurements, for one.
TEST(Growth, IsNotThereWhenACostIsNotAboveZero) {
  for (const double cost : {0.0, -1.0, std::nan("")}) {
    EXPECT_THROW(static_cast<void>(growthOf([cost](std::size_t) { return cost; })),
                 std::runtime_error)
        << cost;
  }
}

TEST(Growth, IsFromOneToTenThousand) {
  EXPECT_EQ(kNumbers.front(), 1U);
  EXPECT_EQ(kNumbers.back(), 10'000U);
}

}  // namespace
