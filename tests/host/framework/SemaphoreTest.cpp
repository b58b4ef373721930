#include "Semaphore.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace {

TEST(Semaphore, CanBeTakenUpToItsCount) {
  Semaphore semaphore(2, 3);
  EXPECT_TRUE(semaphore.take(-1));
  EXPECT_TRUE(semaphore.take(0));
  EXPECT_FALSE(semaphore.take(0));
  semaphore.give();
  EXPECT_TRUE(semaphore.take(0));
}

TEST(Semaphore, DropsACountAboveTheMaximum) {
  Semaphore semaphore(1, 1);
  semaphore.give();
  semaphore.give();
  EXPECT_TRUE(semaphore.take(0));
  EXPECT_FALSE(semaphore.take(0));
}

TEST(Semaphore, RefusesAnInitialCountOutsideItsRange) {
  for (const auto& [initial, maximum] : {std::pair{3, 2}, {-1, 2}, {0, -1}})
    EXPECT_THROW(Semaphore(initial, maximum), std::invalid_argument) << initial << " " << maximum;
  EXPECT_FALSE(Semaphore(0, 0).take(0));
}

TEST(Semaphore, TakeTimesOut) {
  Semaphore semaphore(0, 1);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_FALSE(semaphore.take(20));
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds{20});
}

TEST(Semaphore, TakeEndsWhenAnotherThreadGives) {
  for (const int timeout : {-1, 60'000}) {
    Semaphore semaphore(0, 1);
    std::thread giver([&] { semaphore.give(); });
    EXPECT_TRUE(semaphore.take(timeout)) << timeout;
    giver.join();
  }
}

TEST(Semaphore, LocksOutOtherThreads) {
  Semaphore lock(1, 1);
  int counter = 0;  // not atomic on purpose
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int step = 0; step < 5000; ++step) {
        EXPECT_TRUE(lock.take(-1));
        ++counter;
        lock.give();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 20'000);
}

TEST(Semaphore, RefusesToBeSharedWithOtherProcesses) {
  EXPECT_THROW(Semaphore(1, 1, true), std::invalid_argument);
}

}  // namespace
