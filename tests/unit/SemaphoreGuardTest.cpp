#include "SemaphoreGuard.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "Semaphore.h"

namespace {

TEST(SemaphoreGuard, HoldsTheSemaphoreForItsScope) {
  Semaphore semaphore(1, 1);
  {
    const SemaphoreGuard guard(semaphore);
    EXPECT_FALSE(semaphore.take(0));
  }
  EXPECT_TRUE(semaphore.take(0));
}

TEST(SemaphoreGuard, GivesTheSemaphoreBackOnAnException) {
  Semaphore semaphore(1, 1);
  const auto fail = [&semaphore] {
    const SemaphoreGuard guard(semaphore);
    throw std::out_of_range("too short");
  };
  EXPECT_THROW(fail(), std::out_of_range);
  EXPECT_TRUE(semaphore.take(0));
  EXPECT_FALSE(semaphore.take(0));
}

}  // namespace
