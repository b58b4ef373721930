// A system whose time cannot be read: time() returns -1 on demand.

#include <gtest/gtest.h>

#include <atomic>
#include <ctime>

#include "support/Telephone.h"

namespace {

std::atomic<bool> g_unreadable{false};

}  // namespace

// The linker replaces time() with the second of these, and gives time() the first name.
extern "C" time_t __real_time(time_t* result);  // NOLINT(bugprone-reserved-identifier)
extern "C" time_t __wrap_time(time_t* result);  // NOLINT(bugprone-reserved-identifier)

extern "C" time_t __wrap_time(time_t* result) {  // NOLINT(bugprone-reserved-identifier)
  return g_unreadable ? static_cast<time_t>(-1) : __real_time(result);
}

namespace {

TEST(SystemWithoutReadableTime, HasNoFallbackTimeToSaveAndKeepsTheOldOne) {
  support::Telephone telephone;
  telephone.store("FallbackDateTime", "2020-05-05T17:18:19+00:00");
  telephone.switchOn();
  g_unreadable = true;
  EXPECT_EQ(telephone.service().setFallbackTime(), "");
  EXPECT_EQ(telephone.stored("FallbackDateTime"), "2020-05-05T17:18:19+00:00");
  g_unreadable = false;
  EXPECT_EQ(telephone.service().setFallbackTime(), "2020-05-05T17:18:19+00:00");
}

}  // namespace
