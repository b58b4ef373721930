#include "runtime/SavedTime.h"

#include <gtest/gtest.h>

namespace host {
namespace {

TEST(SavedTime, BetweenTheLimitsHasNoWarning) {
  for (const char* const saved : {"2016-06-16T00:00:00+00:00", "2026-05-04T08:30:00+00:00",
                                  "2037-12-31T23:59:59+00:00", "2016-06-16T02:00:00+02:00"}) {
    EXPECT_EQ(oddSavedTime(saved), std::nullopt) << saved;
  }
}

TEST(SavedTime, BeyondTheLimitsHasAWarning) {
  for (const char* const saved : {"2016-06-15T23:59:59+00:00", "1970-01-01T00:00:00+00:00",
                                  "2038-01-01T00:00:00+00:00", "9999-12-31T23:59:59+00:00"}) {
    EXPECT_EQ(oddSavedTime(saved), "the saved time \"" + std::string(saved) +
                                       "\" is not between 2016-06-16 and 2037-12-31, and the clock "
                                       "starts from it; start with --at UTC to set another");
  }
}

TEST(SavedTime, ThatIsNoUtcStringHasAWarning) {
  for (const char* const saved : {"", "soon", "2026-02-30T00:00:00+00:00", "2026-05-04"}) {
    EXPECT_EQ(oddSavedTime(saved),
              "the saved time \"" + std::string(saved) +
                  "\" is not a UTC string, so the clock does not start from it; "
                  "start with --at UTC to set another");
  }
}

}  // namespace
}  // namespace host
