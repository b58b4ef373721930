#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

// Arithmetic on numbers from outside the plug-in: defined for every input, and limited to the range
// of the type.

template <typename To>
constexpr To saturate(std::int64_t number) {
  using Limits = std::numeric_limits<To>;
  return static_cast<To>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

constexpr int saturatedSum(std::int64_t a, std::int64_t b) {
  return saturate<int>(a + b);
}

// Rounds toward zero; NaN gives 0. The result is at least -2147483647, so that it can be negated.
constexpr std::int32_t truncated(double number) {
  constexpr double kLimit = std::numeric_limits<std::int32_t>::max();
  return number == number ? static_cast<std::int32_t>(std::clamp(number, -kLimit, kLimit)) : 0;
}

// Rounds to the nearest float. Numbers beyond its range give infinity.
constexpr float toFloat(double number) {
  constexpr double kHighest = std::numeric_limits<float>::max();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  if (number > kHighest) return kInfinity;
  if (number < -kHighest) return -kInfinity;
  return static_cast<float>(number);
}
