#include "Threader.h"

#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <iterator>
#include <thread>
#include <utility>

#include "Promise.h"
#include "Threadable.h"

namespace {

constexpr VotkThreadPriority kNormal = votkThreadPriorityNormal;
constexpr std::chrono::milliseconds kLong{200};  // for a caller that does not wait to be seen

// A thread body that calls a function.
class CallingBody final : public Threadable {
 public:
  explicit CallingBody(std::function<void()> work) : m_work(std::move(work)) {}
  void run() override { m_work(); }

 private:
  const std::function<void()> m_work;
};

// A body that runs until it may end, or for this long.
class HeldBody final : public Threadable {
 public:
  explicit HeldBody(std::chrono::milliseconds longest) : m_longest(longest) {}
  void run() override {
    conformance::becomesTrue([this] { return mayEnd.load(); }, m_longest);
    ended = true;
  }

  std::atomic<bool> mayEnd{false};
  std::atomic<bool> ended{false};

 private:
  const std::chrono::milliseconds m_longest;
};

class ThreaderPromise : public conformance::Promise {
 protected:
  unsigned long spawned(Threadable& body, int stackBytes = 0) {
    unsigned long id = 0;
    EXPECT_TRUE(m_threader.spawn(&id, &body, "worker", kNormal, stackBytes));
    return id;
  }
  // Runs a function on a thread, to its end.
  void runOnThread(std::function<void()> work, int stackBytes = 0) {
    CallingBody body(std::move(work));
    m_threader.destroy(spawned(body, stackBytes));
  }

  Threader m_threader;
};

TEST_F(ThreaderPromise, RunsTheBodyOnANewThread) {
  promises("Starts body->run() on a new thread");
  std::thread::id other;
  runOnThread([&] { other = std::this_thread::get_id(); });
  EXPECT_NE(other, std::thread::id());
  EXPECT_NE(other, std::this_thread::get_id());
}

TEST_F(ThreaderPromise, StoresTheIdBeforeTheBodyRuns) {
  promises("stores its id (not 0) in *threadId before the body runs.");
  unsigned long id = 0;
  unsigned long seen = 0;
  CallingBody body([&] { seen = id; });
  ASSERT_TRUE(m_threader.spawn(&id, &body, "worker", kNormal, 0));
  m_threader.destroy(id);
  EXPECT_NE(id, 0U);
  EXPECT_EQ(seen, id);
}

TEST_F(ThreaderPromise, GivesTheThreadItsStack) {
  promises("stackBytes: the least; 0 is the platform's default.");
  constexpr int kStack = 16 << 20;  // more than the usual default
  std::size_t size = 0;
  const auto readSize = [&] {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
  };
  runOnThread(readSize, kStack);
  EXPECT_GE(size, std::size_t{kStack});
  runOnThread(readSize);
  EXPECT_GT(size, 0U);
}

TEST_F(ThreaderPromise, FailureLeavesTheIdUntouched) {
  promises(
      "False, and *threadId untouched, on failure, as without a body or with a negative number of "
      "bytes.");
  unsigned long id = 77;
  EXPECT_FALSE(m_threader.spawn(&id, nullptr, "worker", kNormal, 0));
  EXPECT_EQ(id, 77U);
  CallingBody body([] { ADD_FAILURE() << "ran"; });
  EXPECT_FALSE(m_threader.spawn(&id, &body, "worker", kNormal, -1));
  EXPECT_EQ(id, 77U);
}

TEST_F(ThreaderPromise, TellsRunningThreadsApart) {
  promises("An id is valid from spawn until destroy.");
  HeldBody one(std::chrono::minutes{10});
  HeldBody other(std::chrono::minutes{10});
  const unsigned long first = spawned(one);
  const unsigned long second = spawned(other);
  EXPECT_NE(first, second);
  other.mayEnd = true;
  m_threader.waitForThreadCompletion(second);
  EXPECT_TRUE(other.ended);
  EXPECT_FALSE(one.ended) << "it is not the one that was waited for";
  one.mayEnd = true;
  m_threader.destroy(first);
  m_threader.destroy(second);
}

TEST_F(ThreaderPromise, WaitsUntilTheBodyHasReturned) {
  promises("Returns when the body has returned.");
  HeldBody body(kLong);
  const unsigned long id = spawned(body);
  m_threader.waitForThreadCompletion(id);
  EXPECT_TRUE(body.ended);
  body.mayEnd = true;
  m_threader.waitForThreadCompletion(id);  // again: it has ended
  m_threader.destroy(id);
}

TEST_F(ThreaderPromise, AnyThreadMayCall) {
  promises("Thread: any.");
  std::atomic<int> ran{0};
  conformance::onTwoThreads([&] {
    for (int i = 0; i < 20; ++i) runOnThread([&] { ++ran; });
  });
  EXPECT_EQ(ran, 40);
}

TEST_F(ThreaderPromise, UnknownIdReturnsAtOnce) {
  promises("An unknown id returns at once.");
  CallingBody body([] {});
  const unsigned long id = spawned(body);
  m_threader.destroy(id);
  for (const unsigned long unknown : {0UL, id, id + 1000}) {
    m_threader.waitForThreadCompletion(unknown);
    m_threader.destroy(unknown);
  }
}

TEST_F(ThreaderPromise, DestroyWaitsForARunningThread) {
  promises("Frees a thread's resources. Waits for its end while it still runs.");
  HeldBody body(kLong);
  m_threader.destroy(spawned(body));
  EXPECT_TRUE(body.ended);
  body.mayEnd = true;
  conformance::becomesTrue([&] { return body.ended.load(); });  // it uses the body until then
}

// Without that, the system soon has no more threads, or no more memory for their stacks.
TEST_F(ThreaderPromise, DestroyLeavesNoThread) {
  promises("Frees a thread's resources.");
  const auto threads = [] {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
  };
  const auto before = threads();
  for (int i = 0; i < 20; ++i) runOnThread([] {});
  EXPECT_TRUE(conformance::becomesTrue([&] { return threads() <= before; }));
}

}  // namespace
