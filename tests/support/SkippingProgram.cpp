// A test that skips, for the tests of what becomes of it.

#include <gtest/gtest.h>

TEST(SkippingProgram, Skips) {
  GTEST_SKIP() << "always";
}
