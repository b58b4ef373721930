#include "operator/ClockMoveQueue.h"

#include <gtest/gtest.h>

#include <new>

#include "base/Error.h"
#include "clock/VirtualClock.h"
#include "host/operator/LoopTasks.h"
#include "host/operator/RecordingChannel.h"
#include "support/LogCapture.h"
#include "support/Part.h"

namespace host {
namespace {

using namespace std::chrono_literals;
using Nanoseconds = VirtualClock::Nanoseconds;

constexpr Nanoseconds kCentury = 24h * 36525;

// Expires each second: a century of it takes hours.
class EverySecond : public support::Part {
 public:
  explicit EverySecond(VirtualClock& clock) {
    onTimer = [&clock](int timer) { clock.startTimer(timer); };
    onTimer(clock.createTimer(*this, 1s));
  }
};

class MovesOnALoop : public ::testing::Test {
 protected:
  ClockMove pass(Nanoseconds duration) {
    return {[this, duration] { return clock.uptime() + duration; },
            [] { return std::string("there"); }};
  }

  std::shared_ptr<RecordingChannel> ask(ClockMove move) {
    auto channel = std::make_shared<RecordingChannel>();
    queue.add(std::move(move), channel);
    return channel;
  }

  VirtualClock clock;
  EverySecond owner{clock};
  LoopTasks tasks;
  bool loopIsFull = false;
  ClockMoveQueue queue{clock,
                       [this](auto task) {
                         if (loopIsFull) throw std::bad_alloc();
                         tasks.add(std::move(task));
                       },
                       [](const auto& channel, const auto& note) { channel->reply(note); }};
};

TEST_F(MovesOnALoop, AShortMoveIsAnsweredAtOnce) {
  const auto channel = ask(pass(0s));
  EXPECT_EQ(channel->replies, std::vector<std::string>{"there"});
  EXPECT_TRUE(tasks.size() == 0);
}

TEST_F(MovesOnALoop, ALongMoveYieldsToTheLoopAfterEachSlice) {
  const auto channel = ask(pass(kCentury));
  EXPECT_EQ(channel->holds, 1);
  for (int slice = 0; slice < 3; ++slice) {
    const Nanoseconds before = clock.uptime();
    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_TRUE(tasks.runNext());
    EXPECT_GT(clock.uptime(), before);
    EXPECT_LT(clock.uptime(), kCentury);
  }
  EXPECT_TRUE(channel->replies.empty());
}

TEST_F(MovesOnALoop, AMoveStopsWhereItIsWhenItsClientIsGone) {
  const auto channel = ask(pass(kCentury));
  channel->isWanted = false;
  const Nanoseconds before = clock.uptime();
  EXPECT_TRUE(tasks.runNext());
  EXPECT_FALSE(tasks.runNext());
  EXPECT_EQ(clock.uptime(), before);
  EXPECT_TRUE(channel->replies.empty());
}

TEST_F(MovesOnALoop, MovesOfTwoClientsRunOneAfterTheOther) {
  const auto first = ask(pass(kCentury));
  const auto second = ask(pass(10s));
  EXPECT_TRUE(tasks.runNext());
  EXPECT_TRUE(second->replies.empty());
  first->isWanted = false;
  const Nanoseconds before = clock.uptime();
  while (tasks.runNext()) continue;
  EXPECT_EQ(second->replies, std::vector<std::string>{"there"});
  EXPECT_EQ(clock.uptime(), before + 10s);
}

TEST_F(MovesOnALoop, AnExceptionRefusesTheMoveAndTheNextOneRuns) {
  const auto first = ask(pass(kCentury));
  const auto second = ask({[]() -> Nanoseconds { throw Error("no way"); }, {}});
  const auto third = ask(pass(0s));
  first->isWanted = false;
  while (tasks.runNext()) continue;
  EXPECT_EQ(second->replies, std::vector<std::string>{R"({"ok":false,"error":"no way"})"});
  EXPECT_EQ(third->replies, std::vector<std::string>{"there"});
}

TEST_F(MovesOnALoop, AreGivenUpWhenTheLoopRefusesATask) {
  loopIsFull = true;
  const auto first = ask(pass(kCentury));
  EXPECT_EQ(first.use_count(), 1) << "its end refuses the request";
  const auto second = ask(pass(0s));
  EXPECT_EQ(second->replies, std::vector<std::string>{"there"});
  loopIsFull = false;
  const auto third = ask(pass(kCentury));
  const auto fourth = ask(pass(0s));
  loopIsFull = true;
  EXPECT_TRUE(tasks.runNext());
  EXPECT_EQ(third.use_count() + fourth.use_count(), 2);
}

TEST_F(MovesOnALoop, AreGivenUpWithALogLineThatCountsThem) {
  const auto line = [this](int moves) {
    for (int i = 0; i < moves; ++i) ask(pass(kCentury));
    const support::LogCapture log;
    loopIsFull = true;
    tasks.runNext();
    loopIsFull = false;
    return log.text();
  };
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "1 move of the clock is given up: out of memory",
                      line(1));
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "2 moves of the clock are given up: out of memory",
                      line(2));
}

TEST_F(MovesOnALoop, AMoveWithoutMemoryIsGivenUpWithoutAnAnswer) {
  const auto channel = ask({[]() -> Nanoseconds { throw std::bad_alloc(); }, {}});
  EXPECT_TRUE(channel->replies.empty());
  EXPECT_EQ(channel.use_count(), 1);
}

TEST(ClockMoveQueue, WithoutALoopAMoveRunsToItsEnd) {
  VirtualClock clock;
  EverySecond owner(clock);
  std::string said;
  ClockMoveQueue queue(clock, {}, [&](const auto&, const std::string& note) { said = note; });
  queue.add({[] { return Nanoseconds(1h); }, [] { return std::string("there"); }},
            std::make_shared<RecordingChannel>());
  EXPECT_EQ(said, "there");
  EXPECT_EQ(clock.uptime(), 1h);
}

}  // namespace
}  // namespace host
