#include "services/ManagementThread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

#include "support/LogCapture.h"
#include "support/NewThreads.h"

namespace host {
namespace {

TEST(ManagementThread, RunsTasksInOrderOnOneOtherThread) {
  ManagementThread thread;
  std::vector<int> order;
  std::vector<std::thread::id> ids;
  for (int i = 0; i < 3; ++i) {
    thread.post([&, i] {
      order.push_back(i);
      ids.push_back(std::this_thread::get_id());
    });
  }
  thread.run([&] { ids.push_back(std::this_thread::get_id()); });
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
  for (const auto id : ids) EXPECT_EQ(id, ids[0]);
  EXPECT_NE(ids[0], std::this_thread::get_id());
}

TEST(ManagementThread, StartsWithItsFirstTask) {
  const support::NewThreads started;
  ManagementThread thread;
  EXPECT_EQ(started.count(), 0);
  for (int i = 0; i < 2; ++i) thread.run([] {});
  EXPECT_EQ(started.count(), 1);
}

TEST(ManagementThread, DropsQueuedTasksAndContinues) {
  ManagementThread thread;
  std::promise<void> begun;
  std::promise<void> released;
  int ran = 0;
  thread.post([&] {
    begun.set_value();
    released.get_future().wait();
  });
  begun.get_future().wait();
  for (int i = 0; i < 3; ++i) thread.post([&] { ++ran; });
  thread.dropQueued();
  released.set_value();
  thread.run([&] { ran += 10; });
  EXPECT_EQ(ran, 10);
}

TEST(ManagementThread, RunOfADroppedTaskThrows) {
  ManagementThread thread;
  std::promise<void> begun;
  std::promise<void> released;
  thread.post([&] {
    begun.set_value();
    released.get_future().wait();
  });
  begun.get_future().wait();
  auto run = std::async(std::launch::async, [&] { thread.run([] {}); });
  while (run.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    thread.dropQueued();
  }
  released.set_value();
  EXPECT_THROW(run.get(), std::future_error);
}

TEST(ManagementThread, RunInsideATaskRunsAtOnce) {
  ManagementThread thread;
  std::vector<int> order;
  thread.run([&] {
    thread.run([&] { order.push_back(1); });
    order.push_back(2);
  });
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST(ManagementThread, RunRethrowsTheTasksException) {
  ManagementThread thread;
  EXPECT_THROW(thread.run([] { throw std::out_of_range("no"); }), std::out_of_range);
}

TEST(ManagementThread, ExceptionOfAPostedTaskIsLoggedAndTheNextTaskRuns) {
  const support::LogCapture log;
  ManagementThread thread;
  bool ran = false;
  thread.post([] { throw std::runtime_error("too short"); });
  thread.post([] { throw 7; });
  thread.run([&] { ran = true; });
  EXPECT_TRUE(ran);
  EXPECT_TRUE(log.has(2, "management task threw \"too short\""));
  EXPECT_TRUE(log.has(2, "management task threw"));
}

TEST(ManagementThread, DestructorRunsQueuedTasks) {
  int ran = 0;
  {
    ManagementThread thread;
    for (int i = 0; i < 100; ++i) thread.post([&] { ++ran; });
  }
  EXPECT_EQ(ran, 100);
}

TEST(ManagementThread, RunsTasksOfConcurrentCallers) {
  ManagementThread thread;
  int count = 0;  // only used on the management thread
  std::vector<std::thread> callers;
  for (int i = 0; i < 8; ++i) {
    callers.emplace_back([&] {
      for (int round = 0; round < 100; ++round) thread.run([&] { ++count; });
    });
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(count, 800);
}

}  // namespace
}  // namespace host
