#include "framework/MemoryReserve.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <thread>

#include "support/LogCapture.h"

namespace host {
namespace {

constexpr const char* kLine = "out of memory: the reserve was used";

// What operator new does when there is no memory. Only the tests' main thread uses up the reserve,
// so it has seen each use, whatever the order of the tests.
void runOut() {
  std::get_new_handler()();
}

TEST(MemoryReserve, CanBeUsedOnceUntilItIsRefilled) {
  const support::LogCapture log;
  const MemoryReserve reserve;
  for (int time = 1; time <= 2; ++time) {
    EXPECT_NO_THROW(runOut());
    EXPECT_THROW(runOut(), std::bad_alloc);
    EXPECT_TRUE(MemoryReserve::refill());
    EXPECT_EQ(log.count(kLine), static_cast<std::size_t>(time)) << log.text();
  }
}

TEST(MemoryReserve, GivesEachOtherThreadOneMoreTry) {
  const support::LogCapture log;
  const MemoryReserve reserve;
  EXPECT_NO_THROW(runOut());
  std::thread other([] {
    EXPECT_NO_THROW(runOut());
    EXPECT_THROW(runOut(), std::bad_alloc);
  });
  other.join();
  EXPECT_THROW(runOut(), std::bad_alloc);
  EXPECT_TRUE(MemoryReserve::refill());
  EXPECT_EQ(log.count(kLine), 1U) << log.text();
  EXPECT_NO_THROW(runOut());
}

TEST(MemoryReserve, StaysRefilledWhenAnotherThreadTriesAgain) {
  const support::LogCapture log;
  const MemoryReserve reserve;
  EXPECT_NO_THROW(runOut());
  EXPECT_TRUE(MemoryReserve::refill());
  std::thread other([] { EXPECT_NO_THROW(runOut()); });
  other.join();
  EXPECT_TRUE(MemoryReserve::refill());
  EXPECT_EQ(log.count(kLine), 1U) << log.text();
}

TEST(MemoryReserve, IsNotRefilledWhenUnused) {
  const support::LogCapture log;
  const MemoryReserve reserve;
  EXPECT_TRUE(MemoryReserve::refill());
  EXPECT_TRUE(log.entries().empty()) << log.text();
  EXPECT_NO_THROW(runOut());
}

TEST(MemoryReserve, IsOptional) {
  { const MemoryReserve reserve; }
  EXPECT_EQ(std::get_new_handler(), nullptr);
  EXPECT_TRUE(MemoryReserve::refill());
}

TEST(MemoryReserve, IsNotRefilledAfterItsDestruction) {
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
