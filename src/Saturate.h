#pragma once

#include <cstdint>
#include <limits>

// Arithmetic on numbers from outside the plug-in: defined for every input, and limited to the range
// of the type.

template <typename To>
constexpr To saturate(std::int64_t number) {
  constexpr auto kLowest = static_cast<std::int64_t>(std::numeric_limits<To>::min());
  constexpr auto kHighest = static_cast<std::int64_t>(std::numeric_limits<To>::max());
  return static_cast<To>(number < kLowest ? kLowest : number > kHighest ? kHighest : number);
}

constexpr int saturatedSum(std::int64_t a, std::int64_t b) {
  return saturate<int>(a + b);
}

// Rounds toward zero; NaN gives 0. The result is at least -2147483647, so that it can be negated.
constexpr std::int32_t truncated(double number) {
  constexpr std::int32_t kLimit = std::numeric_limits<std::int32_t>::max();
  if (number != number) return 0;
  if (number >= kLimit) return kLimit;
  if (number <= -kLimit) return -kLimit;
  return static_cast<std::int32_t>(number);
}

// Rounds to the nearest float. Numbers beyond its range give infinity.
constexpr float toFloat(double number) {
  constexpr double kHighest = std::numeric_limits<float>::max();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  if (number > kHighest) return kInfinity;
  if (number < -kHighest) return -kInfinity;
  return static_cast<float>(number);
}
