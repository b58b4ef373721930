#include "framework/MemoryReserve.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>

#include "support/LogCapture.h"

namespace host {
namespace {

constexpr const char* kLine = "memory was short: the reserve had to be used";

// What operator new does when there is no memory.
void runOut() {
  std::get_new_handler()();
}

TEST(MemoryReserve, IsReleasedOnceUntilItIsRefilled) {
  const support::LogCapture log;
  const MemoryReserve reserve;
  for (int time = 1; time <= 2; ++time) {
    EXPECT_NO_THROW(runOut());
    EXPECT_THROW(runOut(), std::bad_alloc);
    EXPECT_TRUE(MemoryReserve::refill());
    EXPECT_EQ(log.count(kLine), static_cast<std::size_t>(time)) << log.text();
  }
}

TEST(MemoryReserve, UnusedOneIsNotReplaced) {
  const support::LogCapture log;
  const MemoryReserve reserve;
  EXPECT_TRUE(MemoryReserve::refill());
  EXPECT_TRUE(log.entries().empty()) << log.text();
  EXPECT_NO_THROW(runOut());
}

TEST(MemoryReserve, ProcessWithoutOneNeedsNoRefill) {
  { const MemoryReserve reserve; }
  EXPECT_EQ(std::get_new_handler(), nullptr);
  EXPECT_TRUE(MemoryReserve::refill());
}

TEST(MemoryReserve, UsedOneThatIsDestroyedNeedsNoRefill) {
  std::optional<MemoryReserve> reserve;
  reserve.emplace();
  runOut();
  reserve.reset();
  const support::LogCapture log;
  EXPECT_TRUE(MemoryReserve::refill());
  EXPECT_TRUE(log.entries().empty()) << log.text();
}

}  // namespace
}  // namespace host
