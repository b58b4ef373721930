#include "remote/TurnQueue.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <vector>

#include "base/IoLoop.h"
#include "support/NoMemory.h"

namespace host {
namespace {

TEST(TurnQueue, RunsOneStepInEachPassOfTheLoop) {
  IoLoop loop;
  TurnQueue turns(loop);
  std::vector<int> ran;
  for (const int step : {1, 2, 3}) turns.add([&ran, step] { ran.push_back(step); });
  EXPECT_TRUE(ran.empty());
  for (const std::size_t count : {1U, 2U, 3U}) {
    EXPECT_TRUE(loop.runOne());
    EXPECT_EQ(ran.size(), count);
  }
  EXPECT_EQ(ran, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(loop.runAllReady(), 0U);
}

TEST(TurnQueue, NeedsNoMemory) {
  IoLoop loop;
  TurnQueue turns(loop);
  int ran = 0;
  std::function<void()> step = [&ran] { ++ran; };
  std::function<void()> again = step;
  {
    const support::NoMemory none;
    turns.add(std::move(step));
    turns.add(std::move(again));
    EXPECT_TRUE(loop.runOne());
    EXPECT_EQ(ran, 1) << "the other runs in the next pass";
    EXPECT_TRUE(loop.runOne());
  }
  EXPECT_EQ(ran, 2);
}

TEST(TurnQueue, RunsTheNextStepAfterOneThatThrows) {
  IoLoop loop;
  TurnQueue turns(loop);
  int ran = 0;
  turns.add([] { throw std::bad_alloc(); });
  turns.add([&ran] { ++ran; });
  EXPECT_THROW(loop.runOne(), std::bad_alloc);
  EXPECT_EQ(loop.runAllReady(), 1U);
  EXPECT_EQ(ran, 1);
}

TEST(TurnQueue, DropsQueuedStepsWhenDestroyed) {
  IoLoop loop;
  int ran = 0;
  {
    TurnQueue(loop).add([&ran] { ++ran; });
  }
  loop.runAllReady();
  EXPECT_EQ(ran, 0);
}

}  // namespace
}  // namespace host
