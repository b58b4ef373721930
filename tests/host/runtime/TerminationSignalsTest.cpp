#include "runtime/TerminationSignals.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>

#include "clock/VirtualClock.h"
#include "runtime/EventLoop.h"

namespace host {
namespace {

bool sleeps(pid_t thread) {
  std::ifstream facts("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string text;
  std::getline(facts, text);
  return text.find(") S ") != std::string::npos;
}

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
  std::atomic<bool> runs = false;
  loop.post([&] { runs = true; });
  std::thread other([&, thread = ::gettid()] {
    while (!runs || !sleeps(thread)) std::this_thread::yield();
    ::kill(::getpid(), SIGTERM);
  });
  loop.run();
  other.join();
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
