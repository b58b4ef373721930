#include "ntpclient/Backoff.h"

#include <gtest/gtest.h>

namespace host::ntp {
namespace {

using namespace std::chrono_literals;

TEST(Backoff, DoublesUpToItsLimitAndStartsAgainAfterASuccess) {
  Backoff backoff;
  for (const auto wait : {15s, 30s, 60s, 120s, 240s, 480s, 960s, 1024s, 1024s}) {
    EXPECT_EQ(backoff.next(), wait);
  }
  backoff.reset();
  EXPECT_EQ(backoff.next(), 15s);
}

TEST(Backoff, StaysSlowedDownAfterASuccess) {
  Backoff backoff;
  backoff.slowDown();
  EXPECT_EQ(backoff.next(), 60s);
  backoff.reset();
  EXPECT_EQ(backoff.next(), 60s);
  for (int i = 0; i < 100; ++i) backoff.slowDown();
  EXPECT_EQ(backoff.next(), 1024s);
}

}  // namespace
}  // namespace host::ntp
