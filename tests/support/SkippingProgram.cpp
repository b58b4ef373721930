// A test that skips, for the tests of NoSkips.

#include <gtest/gtest.h>

TEST(SkippingProgram, Skips) {
  GTEST_SKIP() << "always";
}
