#include "Rounds.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Findings.h"

namespace {

using bench::Rounds;

TEST(Median, IsTheOneInTheMiddle) {
  EXPECT_DOUBLE_EQ(bench::median({3, 1, 100}), 3);
  EXPECT_DOUBLE_EQ(bench::median({4, 1, 100, 2}), 3);
  EXPECT_DOUBLE_EQ(bench::median({7}), 7);
}

TEST(Quantile, LeavesThatPartBelow) {
  std::vector<double> numbers;
  for (int i = 100; i >= 0; --i) numbers.push_back(i);
  EXPECT_DOUBLE_EQ(bench::quantile(numbers, 0.5), 50);
  EXPECT_DOUBLE_EQ(bench::quantile(numbers, 0.99), 99);
  EXPECT_DOUBLE_EQ(bench::quantile({7}, 0.99), 7);
}

TEST(MiddleMean, LeavesOutTheQuartersAtTheEnds) {
  EXPECT_DOUBLE_EQ(bench::middleMean({1000, 2, 4, 0}), 3);
  EXPECT_DOUBLE_EQ(bench::middleMean({1, 2, 4}), 7.0 / 3);
  EXPECT_DOUBLE_EQ(bench::middleMean({7}), 7);
}

TEST(Rounds, TakeTurnsFloorFirst) {
  std::string order;
  const auto rounds = Rounds::alternate(
      [&] {
        order += 'f';
        return 2.0;
      },
      [&] {
        order += '_';
        return 1.0;
      },
      3);
  EXPECT_EQ(order, "_f_f_f");
}

// The second round was slow for both, the third for the figure alone.
TEST(Rounds, CompareWhatWasFoundInTheSameRound) {
  Rounds rounds;
  rounds.add(12, 10);
  rounds.add(130, 100);
  rounds.add(90, 10);
  EXPECT_DOUBLE_EQ(rounds.figure(), 90);
  EXPECT_DOUBLE_EQ(rounds.floor(), 10);
  EXPECT_DOUBLE_EQ(bench::ratioOf(rounds).compared, 1.3);
  EXPECT_DOUBLE_EQ(bench::differenceOf(rounds).compared, 30);
}

TEST(Rounds, AreNineAtLeast) {
  EXPECT_GE(Rounds::kLeast, 9U);
  EXPECT_GE(Rounds::kUsual, Rounds::kLeast);
}

}  // namespace
