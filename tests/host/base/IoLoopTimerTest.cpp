#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "base/IoLoop.h"
#include "support/NoMemory.h"

namespace host {
namespace {

using std::chrono::milliseconds;

TEST(IoLoopTimer, ExpiresOnceInTheOrderOfTime) {
  IoLoop loop;
  std::string order;
  IoLoop::Timer later(loop, [&] {
    order += 'b';
    loop.stop();
  });
  IoLoop::Timer sooner(loop, [&] { order += 'a'; });
  IoLoop::Timer never(loop, [&] { order += 'c'; });
  later.start(milliseconds(2));
  sooner.start(milliseconds(1));
  never.start(IoLoop::Timer::kLongest);
  loop.run();
  EXPECT_EQ(order, "ab");
}

TEST(IoLoopTimer, StartsAnewAndIsCancelledWithoutMemory) {
  IoLoop loop;
  int expired = 0;
  IoLoop::Timer timer(loop, [&] { ++expired; });
  IoLoop::Timer end(loop, [&] { loop.stop(); });
  {
    const support::NoMemory none;
    timer.start(IoLoop::Timer::kLongest);
    timer.start(milliseconds(0));
    EXPECT_TRUE(loop.runOne());
    timer.start(milliseconds(0));
    timer.cancel();
    end.start(milliseconds(1));
  }
  loop.run();
  EXPECT_EQ(expired, 1);
}

TEST(IoLoopTimer, ExpiresAloneSoThatOthersAreNotKeptWaiting) {
  IoLoop loop;
  std::string order;
  IoLoop::Timer first(loop, [&] { order += 'a'; });
  IoLoop::Timer second(loop, [&] { order += 'b'; });
  first.start(milliseconds(0));
  second.start(milliseconds(0));
  EXPECT_TRUE(loop.runOne());
  EXPECT_EQ(order, "a");
  EXPECT_TRUE(loop.runOne());
  EXPECT_EQ(order, "ab");
}

}  // namespace
}  // namespace host
