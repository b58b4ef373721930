#include "runtime/ClockSetWatch.h"

#include <gtest/gtest.h>
#include <poll.h>

namespace host {
namespace {

// No test sets the machine's clock: this is all that can be seen of it.
TEST(ClockSetWatch, WaitsUntilTheClockIsSet) {
  const Descriptor watch = openClockSetWatch();
  pollfd ready{watch.get(), POLLIN, 0};
  EXPECT_EQ(::poll(&ready, 1, 0), 0);
  clearClockSetWatch(watch.get());
  EXPECT_EQ(::poll(&ready, 1, 0), 0);
}

}  // namespace
}  // namespace host
