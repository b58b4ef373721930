#include "Threader.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <chrono>
#include <functional>
#include <future>
#include <stdexcept>

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

// Runs `work` on a thread of that name, and waits for its end.
void runThread(std::function<void()> work, const char* name = "worker") {
  Body body(std::move(work));
  Threader threader;
  unsigned long id = 0;
  ASSERT_TRUE(threader.spawn(&id, &body, name, kNormal, 0));
  threader.waitForThreadCompletion(id);
  threader.destroy(id);
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

TEST(Threader, RefusesInvalidArguments) {
  Body body([] { ADD_FAILURE() << "ran"; });
  Threader threader;
  unsigned long id = 77;
  EXPECT_FALSE(threader.spawn(nullptr, &body, "x", kNormal, 0));
  EXPECT_FALSE(threader.spawn(&id, &body, "x", kNormal, 1)) << "one byte is too small a stack";
  EXPECT_EQ(id, 77U);
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
