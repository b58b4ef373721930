#include "base/TerminationSignals.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>

#include "clock/VirtualClock.h"
#include "runtime/EventLoop.h"
#include "support/WaitingCall.h"

namespace host {
namespace {

class LoopWithTerminationSignals : public testing::Test {
 protected:
  LoopWithTerminationSignals() { loop.stopOnSignals(); }

  VirtualClock clock;
  EventLoop loop{clock};
};

TEST_F(LoopWithTerminationSignals, EndTheRunAndNotTheProcess) {
  for (const int signal : {SIGINT, SIGTERM}) {
    loop.post([signal] { std::raise(signal); });
    loop.run();
  }
}

TEST_F(LoopWithTerminationSignals, EndTheRunBeforeQueuedTasks) {
  int ran = 0;
  loop.post([] { std::raise(SIGTERM); });
  for (int i = 0; i < 1000; ++i) loop.post([&] { ++ran; });
  loop.run();
  EXPECT_EQ(ran, 0);
  loop.post([&] { loop.stop(); });
  loop.run();
  EXPECT_EQ(ran, 1000) << "a later run executes them";
}

TEST_F(LoopWithTerminationSignals, WakeASleepingLoop) {
  const support::WaitingCall running([this] { loop.run(); });
  EXPECT_TRUE(running.waits());
  ::kill(::getpid(), SIGTERM);
}

TEST(TerminationSignals, AreReadableOnlyWhileOneIsPending) {
  TerminationSignals signals;
  const auto readable = [&] {
    pollfd waited{signals.descriptor(), POLLIN, 0};
    return ::poll(&waited, 1, 0) == 1;
  };
  EXPECT_FALSE(readable());
  std::raise(SIGTERM);
  EXPECT_TRUE(readable());
  EXPECT_TRUE(signals.take());
  EXPECT_FALSE(readable());
  EXPECT_FALSE(signals.take());
}

}  // namespace
}  // namespace host
