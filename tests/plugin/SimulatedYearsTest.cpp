// The processor time that simulated years of the whole service take, with its timers and an
// observer.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <ctime>

#include "support/Sanitizers.h"
#include "support/Telephone.h"

namespace {

using Seconds = std::chrono::duration<double>;

// The bounds hold for optimised builds without a sanitizer.
#if !defined(__arm__)
constexpr bool kMeasured =
    CLOCK_OPTIMISED && !support::kThreadSanitizer && !support::kAddressSanitizer;
#else
constexpr bool kMeasured = false;
#endif

Seconds processorTime() {
  return Seconds(static_cast<double>(std::clock()) / static_cast<double>(CLOCKS_PER_SEC));
}

Seconds costOf(std::chrono::hours simulated) {
  support::Telephone telephone;
  const Seconds begin = processorTime();
  telephone.storeZone("1", true, true, 9);
  telephone.switchOn();
  telephone.pass(simulated);
  return processorTime() - begin;
}

TEST(SimulatedYears, AYearTakesUnderFiftyMilliseconds) {
  const Seconds cost = costOf(std::chrono::hours(24 * 365));
  std::printf("a simulated year: %.1f ms\n", cost.count() * 1e3);
  if (kMeasured) {
    EXPECT_LT(cost.count(), 0.050);
  }
}

TEST(SimulatedYears, ACenturyTakesUnderFiveSeconds) {
  const int years = kMeasured ? 100 : 1;
  const Seconds cost = costOf(std::chrono::hours(24 * 36525) / 100 * years);
  std::printf("%d simulated years: %.2f s\n", years, cost.count());
  if (kMeasured) {
    EXPECT_LT(cost.count(), 5.0);
  }
}

}  // namespace
