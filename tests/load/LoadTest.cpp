// Many subscribers and callers at once, in short; see ./dev load for a minute of it.
#include <gtest/gtest.h>

#include <cstdio>

#include "load/Latencies.h"
#include "load/LoadRun.h"

namespace load {
namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

TEST(Load, EverybodyGetsWhatIsDue) {
  Size size;
  size.duration = seconds(CLOCK_LOAD_SECONDS);
  size.warmUp = size.duration / 2;
  LoadRun everybody(size);
  EXPECT_TRUE(everybody.run()) << everybody.fault();
  std::printf("%s", toText(everybody.figures()).c_str());
  EXPECT_GT(everybody.figures().events, 0U);
  EXPECT_GT(everybody.figures().calls, 0U);
  EXPECT_GT(everybody.figures().mostMemory, 0U);
}

TEST(Latencies, QuantileIsWhatSuchAPartDidNotExceed) {
  Latencies latencies;
  EXPECT_EQ(latencies.quantile(0.99), 0U);
  for (int i = 1; i <= 100; ++i) latencies.add(microseconds(i));
  EXPECT_EQ(latencies.count(), 100U);
  EXPECT_EQ(latencies.quantile(0.5), 51U);
  EXPECT_EQ(latencies.quantile(0.99), 100U);
  latencies.add(seconds(10));
  EXPECT_EQ(latencies.quantile(1 - 1e-9), 100'000U) << "a tenth of a second or more";
}

}  // namespace
}  // namespace load
