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

// A thread body of the test's choice.
class Body final : public Threadable {
 public:
  explicit Body(std::function<void()> work) : m_work(std::move(work)) {}
  void run() override { m_work(); }

 private:
  const std::function<void()> m_work;
};

constexpr VotkThreadPriority kNormal = votkThreadPriorityNormal;

TEST(Threadable, HasDefaults) {
  Body body([] {});
  EXPECT_EQ(body.getThreadPriorityForPlatform(), 0);
  EXPECT_EQ(body.type(), "Threadable");
}

TEST(Threader, RunsTheBodyOnAThreadOfItsOwn) {
  std::thread::id other;
  Body body([&] { other = std::this_thread::get_id(); });
  Threader threader;
  unsigned long id = 0;
  ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
  threader.waitForThreadCompletion(id);
  EXPECT_NE(id, 0U);
  EXPECT_NE(other, std::thread::id());
  EXPECT_NE(other, std::this_thread::get_id());
  threader.destroy(id);
}

TEST(Threader, StoresTheIdBeforeTheBodyRuns) {
  unsigned long id = 0;
  unsigned long seen = 0;
  Body body([&] { seen = id; });
  Threader threader;
  ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
  threader.waitForThreadCompletion(id);
  EXPECT_EQ(seen, id);
  threader.destroy(id);
}

TEST(Threader, LeavesSignalsToTheMainThread) {
  sigset_t blocked;
  sigemptyset(&blocked);
  Body body([&] { pthread_sigmask(SIG_BLOCK, nullptr, &blocked); });
  Threader threader;
  unsigned long id = 0;
  ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
  threader.destroy(id);
  for (const int signal : {SIGTERM, SIGINT, SIGPIPE}) EXPECT_EQ(sigismember(&blocked, signal), 1);
}

TEST(Threader, NamesTheThreadWithinTheKernelsBound) {
  const std::pair<const char*, const char*> rows[] = {
      {"short", "short"}, {"SNTP Recognition Thread", "SNTP Recognitio"}, {"", ""}, {nullptr, ""}};
  for (const auto& [given, expected] : rows) {
    char name[32] = "?";
    Body body([&] { pthread_getname_np(pthread_self(), name, sizeof name); });
    Threader threader;
    unsigned long id = 0;
    ASSERT_TRUE(threader.spawn(&id, &body, given, kNormal, 0));
    threader.waitForThreadCompletion(id);
    EXPECT_STREQ(name, expected);
    threader.destroy(id);
  }
}

TEST(Threader, GivesTheStackThatIsAskedFor) {
  constexpr int kStack = 1 << 20;
  std::size_t size = 0;
  Body body([&] {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
  });
  Threader threader;
  unsigned long id = 0;
  ASSERT_TRUE(threader.spawn(&id, &body, "stack", kNormal, kStack));
  threader.waitForThreadCompletion(id);
  EXPECT_GE(size, std::size_t{kStack});
  EXPECT_LT(size, std::size_t{2 * kStack});
  threader.destroy(id);
}

TEST(Threader, RefusesWhatCannotBeStarted) {
  Body body([] { ADD_FAILURE() << "ran"; });
  Threader threader;
  unsigned long id = 77;
  EXPECT_FALSE(threader.spawn(nullptr, &body, "x", kNormal, 0));
  EXPECT_FALSE(threader.spawn(&id, nullptr, "x", kNormal, 0));
  EXPECT_FALSE(threader.spawn(&id, &body, "x", kNormal, -1));
  EXPECT_FALSE(threader.spawn(&id, &body, "x", kNormal, 1)) << "no thread lives on one byte";
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
  unsigned long id = 0;
  ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
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

TEST(Threader, DestroysAThreadThatStillRunsByWaiting) {
  std::promise<void> go;
  bool returned = false;
  Body body([&] {
    go.get_future().wait();
    returned = true;
  });
  Threader threader;
  unsigned long id = 0;
  ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
  go.set_value();
  threader.destroy(id);
  EXPECT_TRUE(returned);
}

TEST(Threader, ReturnsAtOnceForUnknownIds) {
  Body body([] {});
  Threader threader;
  unsigned long id = 0;
  ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
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

TEST(Threader, SurvivesABodyThatThrows) {
  const support::LogCapture log;
  Body body([] { throw std::runtime_error("on purpose"); });
  Threader threader;
  unsigned long id = 0;
  ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
  threader.waitForThreadCompletion(id);
  threader.destroy(id);
  EXPECT_TRUE(log.has(2, "thread \"worker\" ended by an exception: on purpose")) << log.text();
}

TEST(Threader, NeverUsesAnIdTwice) {
  Body body([] {});
  Threader threader;
  unsigned long last = 0;
  for (int i = 0; i < 100; ++i) {
    unsigned long id = 0;
    ASSERT_TRUE(threader.spawn(&id, &body, "worker", kNormal, 0));
    EXPECT_GT(id, last);
    last = id;
    threader.destroy(id);
  }
}

}  // namespace
