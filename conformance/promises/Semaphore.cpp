#include "Semaphore.h"

#include <atomic>
#include <thread>
#include <vector>

#include "Promise.h"

namespace {

using std::chrono::milliseconds;

class SemaphorePromise : public conformance::Promise {};

TEST_F(SemaphorePromise, CanBeTakenUpToItsInitialCount) {
  promises("initialCount: 0-maximumCount.");
  Semaphore semaphore(2, 3);
  EXPECT_TRUE(semaphore.take(-1));
  EXPECT_TRUE(semaphore.take(0));
  EXPECT_FALSE(semaphore.take(0));
}

TEST_F(SemaphorePromise, TakeWithoutLimitWaitsForACount) {
  promises("timeoutMilliseconds: -1 waits without limit.");
  Semaphore semaphore(0, 1);
  std::atomic<bool> taken{false};
  std::thread taker([&] {
    EXPECT_TRUE(semaphore.take(-1));
    taken = true;
  });
  EXPECT_FALSE(conformance::becomesTrue([&] { return taken.load(); }, milliseconds{20}));
  semaphore.give();
  taker.join();
  EXPECT_FALSE(semaphore.take(0)) << "it has taken the count";
}

TEST_F(SemaphorePromise, TakeEndsWhenTheTimeRanOut) {
  promises("False when the time ran out; never with -1.");
  Semaphore semaphore(0, 1);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_FALSE(semaphore.take(100));
  const auto waited = std::chrono::steady_clock::now() - before;
  EXPECT_GE(waited, milliseconds{100});
  EXPECT_LT(waited, std::chrono::minutes{1}) << "the unit is milliseconds";
}

TEST_F(SemaphorePromise, TakeWithALimitEndsWhenAnotherThreadGives) {
  promises("Waits for a count and takes it.");
  Semaphore semaphore(0, 1);
  std::thread giver([&] { semaphore.give(); });
  EXPECT_TRUE(semaphore.take(60'000));
  giver.join();
  EXPECT_FALSE(semaphore.take(0)) << "it has taken the count";
}

TEST_F(SemaphorePromise, GiveGivesACountBack) {
  promises("Gives a count back.");
  Semaphore semaphore(1, 1);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(semaphore.take(0)) << i;
    semaphore.give();
  }
}

TEST_F(SemaphorePromise, DropsACountAboveTheMaximum) {
  promises("One above the maximum is dropped.");
  Semaphore semaphore(1, 2);
  for (int i = 0; i < 3; ++i) semaphore.give();
  EXPECT_TRUE(semaphore.take(0));
  EXPECT_TRUE(semaphore.take(0));
  EXPECT_FALSE(semaphore.take(0));
}

TEST_F(SemaphorePromise, LocksOutOtherThreads) {
  promises("A counting semaphore of one process. Owner: its creator. Thread: any.");
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

}  // namespace
