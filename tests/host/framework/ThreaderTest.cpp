#include "Threader.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <stdexcept>
#include <thread>

#include "Threadable.h"
#include "support/LogCapture.h"

namespace {

// A thread body that calls a function.
class Body final : public Threadable {
 public:
  explicit Body(std::function<void()> work) : m_work(std::move(work)) {}
  void run() override { m_work(); }

 private:
  const std::function<void()> m_work;
};

constexpr VotkThreadPriority kNormal = votkThreadPriorityNormal;

unsigned long spawned(Body& body) {
  unsigned long id = 0;
  EXPECT_TRUE(Threader().spawn(&id, &body, "worker", kNormal, 0));
  return id;
}

// Runs `work` on a thread of that name and stack size, and waits for its end.
void runThread(std::function<void()> work, const char* name = "worker", int stackBytes = 0) {
  Body body(std::move(work));
  Threader threader;
  unsigned long id = 0;
  ASSERT_TRUE(threader.spawn(&id, &body, name, kNormal, stackBytes));
  threader.waitForThreadCompletion(id);
  threader.destroy(id);
}

TEST(Threader, RunsTheBodyOnANewThread) {
  std::thread::id other;
  runThread([&] { other = std::this_thread::get_id(); });
  EXPECT_NE(other, std::thread::id());
  EXPECT_NE(other, std::this_thread::get_id());
}

TEST(Threader, StoresTheIdBeforeTheBodyRuns) {
  unsigned long id = 0;
  unsigned long seen = 0;
  Body body([&] { seen = id; });
  Threader threader;
  ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
  threader.destroy(id);
  EXPECT_NE(id, 0U);
  EXPECT_EQ(seen, id);
}

TEST(Threader, LeavesSignalsToTheMainThread) {
  sigset_t blocked;
  sigemptyset(&blocked);
  runThread([&] { pthread_sigmask(SIG_BLOCK, nullptr, &blocked); });
  for (const int signal : {SIGTERM, SIGINT, SIGPIPE}) EXPECT_EQ(sigismember(&blocked, signal), 1);
}

TEST(Threader, ClipsTheNameToTheKernelsLimit) {
  const std::pair<const char*, const char*> rows[] = {
      {"short", "short"}, {"SNTP Recognition Thread", "SNTP Recognitio"}, {"", ""}, {nullptr, ""}};
  for (const auto& [given, expected] : rows) {
    char name[32] = "?";
    runThread([&] { pthread_getname_np(pthread_self(), name, sizeof name); }, given);
    EXPECT_STREQ(name, expected);
  }
}

TEST(Threader, SetsTheStackSize) {
  constexpr int kStack = 1 << 20;
  std::size_t size = 0;
  const auto readSize = [&] {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
  };
  runThread(readSize, "stack", kStack);
  EXPECT_GE(size, std::size_t{kStack});
  EXPECT_LT(size, std::size_t{2 * kStack});
}

TEST(Threader, RefusesInvalidArguments) {
  Body body([] { ADD_FAILURE() << "ran"; });
  Threader threader;
  unsigned long id = 77;
  EXPECT_FALSE(threader.spawn(nullptr, &body, "x", kNormal, 0));
  EXPECT_FALSE(threader.spawn(&id, nullptr, "x", kNormal, 0));
  EXPECT_FALSE(threader.spawn(&id, &body, "x", kNormal, -1));
  EXPECT_FALSE(threader.spawn(&id, &body, "x", kNormal, 1)) << "one byte is too small a stack";
  EXPECT_EQ(id, 77U);
}

TEST(Threader, WaitsForTheBodyToReturn) {
  std::promise<void> go;
  std::atomic<bool> returned{false};
  Body body([&] {
    go.get_future().wait();
    returned = true;
  });
  Threader threader;
  const unsigned long id = spawned(body);
  std::thread another([&] {
    threader.waitForThreadCompletion(id);
    EXPECT_TRUE(returned);
  });
  go.set_value();
  threader.waitForThreadCompletion(id);
  EXPECT_TRUE(returned);
  another.join();
  threader.waitForThreadCompletion(id);
  threader.destroy(id);
}

TEST(Threader, DestroyWaitsForARunningThread) {
  std::promise<void> go;
  bool returned = false;
  Body body([&] {
    go.get_future().wait();
    returned = true;
  });
  const unsigned long id = spawned(body);
  go.set_value();
  Threader().destroy(id);
  EXPECT_TRUE(returned);
}

TEST(Threader, ReturnsAtOnceForUnknownIds) {
  Body body([] {});
  Threader threader;
  const unsigned long id = spawned(body);
  threader.destroy(id);
  for (const unsigned long unknown : {0UL, id, id + 1000}) {
    threader.waitForThreadCompletion(unknown);
    threader.destroy(unknown);
  }
}

TEST(Threader, DoesNotLetAThreadWaitForItself) {
  Threader threader;
  unsigned long id = 0;
  std::promise<void> done;
  Body body([&] {
    threader.waitForThreadCompletion(id);
    threader.destroy(id);
    done.set_value();
  });
  ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
  EXPECT_EQ(done.get_future().wait_for(std::chrono::seconds{20}), std::future_status::ready);
}

TEST(Threader, LogsABodysException) {
  const support::LogCapture log;
  runThread([] { throw std::runtime_error("on purpose"); });
  EXPECT_TRUE(log.has(2, "thread \"worker\" ended by an exception: on purpose")) << log.text();
}

TEST(Threader, NeverUsesAnIdTwice) {
  Body body([] {});
  unsigned long last = 0;
  for (int i = 0; i < 100; ++i) {
    const unsigned long id = spawned(body);
    EXPECT_GT(id, last);
    last = id;
    Threader().destroy(id);
  }
}

}  // namespace
