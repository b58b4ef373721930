#include "framework/QueryLogLimit.h"

#include <gtest/gtest.h>

namespace {

using host::QueryLogLimit;
using std::chrono::seconds;

TEST(QueryLogLimit, AdmitsSoManyInASecond) {
  QueryLogLimit limit;
  const auto first = [] { return seconds(7); };
  for (unsigned i = 0; i < QueryLogLimit::kMost; ++i) EXPECT_TRUE(limit.admits(first));
  EXPECT_FALSE(limit.admits(first));
  EXPECT_FALSE(limit.admits(first));
  EXPECT_EQ(limit.takeDropped(), 0U) << "the second is not over";
  EXPECT_TRUE(limit.admits([] { return seconds(8); }));
  EXPECT_EQ(limit.takeDropped(), 2U);
  EXPECT_EQ(limit.takeDropped(), 0U);
}

TEST(QueryLogLimit, AsksForTheTimeOnlyWhenSoManyWereAdmitted) {
  QueryLogLimit limit;
  int asked = 0;
  const auto now = [&] { return seconds(++asked); };
  for (unsigned i = 0; i < 2 * QueryLogLimit::kMost; ++i) EXPECT_TRUE(limit.admits(now));
  EXPECT_EQ(asked, 2);
}

}  // namespace
