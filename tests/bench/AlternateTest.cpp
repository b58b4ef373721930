#include "Alternate.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(Quantile, LeavesThatPartBelow) {
  std::vector<double> numbers;
  for (int i = 100; i >= 0; --i) numbers.push_back(i);
  EXPECT_DOUBLE_EQ(bench::quantile(numbers, 0.5), 50);
  EXPECT_DOUBLE_EQ(bench::quantile(numbers, 0.99), 99);
  EXPECT_DOUBLE_EQ(bench::quantile({7}, 0.99), 7);
}

TEST(Alternately, MeasuresTheBaselineFirstAndFindsTheMedians) {
  std::string order;
  std::vector<double> figures{30, 1, 20};
  std::vector<double> baselines{2, 300, 1};
  const auto next = [&](std::vector<double>& numbers, char side) {
    order += side;
    const double number = numbers.back();
    numbers.pop_back();
    return number;
  };
  const bench::Sample found = bench::alternately(
      3, [&] { return next(figures, 'f'); }, [&] { return next(baselines, 'b'); });
  EXPECT_EQ(order, "bfbfbf");
  EXPECT_DOUBLE_EQ(found.value, 20);
  EXPECT_DOUBLE_EQ(found.baseline.value(), 2);
}

}  // namespace
