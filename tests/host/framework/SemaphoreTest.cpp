#include "Semaphore.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace {

TEST(Semaphore, RefusesAnInitialCountOutsideItsRange) {
  for (const auto& [initial, maximum] : {std::pair{3, 2}, {-1, 2}, {0, -1}})
    EXPECT_THROW(Semaphore(initial, maximum), std::invalid_argument) << initial << " " << maximum;
  EXPECT_FALSE(Semaphore(0, 0).take(0));
}

TEST(Semaphore, RefusesToBeSharedWithOtherProcesses) {
  EXPECT_THROW(Semaphore(1, 1, true), std::invalid_argument);
}

}  // namespace
