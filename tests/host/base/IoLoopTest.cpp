#include "base/IoLoop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "base/Error.h"
#include "support/NoMemory.h"
#include "support/OpenDescriptors.h"
#include "support/SoftLimit.h"

namespace host {
namespace {

struct Sockets {
  Sockets() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    own.reset(ends[0]);
    other.reset(ends[1]);
  }
  void send() const { EXPECT_EQ(::write(other.get(), "x", 1), 1); }
  void receive() const {
    char byte = 0;
    EXPECT_EQ(::read(own.get(), &byte, 1), 1);
  }
  Descriptor own;
  Descriptor other;
};

TEST(IoLoop, RunsTasksInTheOrderOfTheirPosts) {
  IoLoop loop;
  std::vector<int> ran;
  for (const int task : {1, 2, 3}) loop.post([&ran, task] { ran.push_back(task); });
  EXPECT_EQ(loop.runAllReady(), 3U);
  EXPECT_EQ(ran, (std::vector<int>{1, 2, 3}));
}

TEST(IoLoop, KnowsWhetherAHandlerIsTheOnlyOneOfItsPass) {
  IoLoop loop;
  const std::array<Sockets, 2> sockets;
  std::vector<bool> alone;
  const auto handler = [&](const Sockets& at) {
    return [&, own = &at](std::uint32_t) {
      own->receive();
      alone.push_back(loop.runsTheOnlyHandler());
    };
  };
  const IoLoop::Watch one(loop, sockets[0].own.get(), EPOLLIN, handler(sockets[0]));
  const IoLoop::Watch another(loop, sockets[1].own.get(), EPOLLIN, handler(sockets[1]));
  sockets[0].send();
  loop.runAllReady();
  for (const Sockets& both : sockets) both.send();
  loop.runAllReady();
  sockets[1].send();
  loop.post([] {});
  loop.runAllReady();
  EXPECT_EQ(alone, (std::vector<bool>{true, false, false, false}));
}

TEST(IoLoop, QueuesATaskOnceUntilItRuns) {
  IoLoop loop;
  int ran = 0;
  std::shared_ptr<IoLoop::Task> task;
  task = std::make_shared<IoLoop::Task>([&] {
    if (++ran < 3) loop.post(task);
  });
  loop.post(task);
  loop.post(task);
  EXPECT_EQ(loop.runAllReady(), 3U);
  EXPECT_EQ(ran, 3);
}

TEST(IoLoop, PostsAgainWithoutMemory) {
  IoLoop loop;
  int ran = 0;
  const auto task = std::make_shared<IoLoop::Task>([&] { ++ran; });
  const support::NoMemory none;
  loop.post(task);
  loop.runAllReady();
  loop.post(task);
  loop.runAllReady();
  EXPECT_EQ(ran, 2);
}

TEST(IoLoop, RunsReadyDescriptorsBeforeTheNextTask) {
  IoLoop loop;
  const Sockets sockets;
  std::string order;
  const IoLoop::Watch watch(loop, sockets.own.get(), EPOLLIN, [&](auto) {
    sockets.receive();
    order += 's';
  });
  loop.post([&] {
    order += 't';
    sockets.send();
    loop.post([&] { order += 't'; });
  });
  loop.runAllReady();
  EXPECT_EQ(order, "tst");
}

TEST(IoLoop, KeepsWhatIsReadyWhenAHandlerThrows) {
  IoLoop loop;
  int ran = 0;
  loop.post([] { throw std::bad_alloc(); });
  loop.post([&] { ++ran; });
  EXPECT_THROW(loop.runOne(), std::bad_alloc);
  EXPECT_TRUE(loop.runOne());
  EXPECT_EQ(ran, 1);
}

TEST(IoLoop, IsStoppedByAnotherThreadAndRunsAgain) {
  IoLoop loop;
  for (int i = 0; i < 2; ++i) {
    loop.restart();
    std::thread other([&] { loop.stop(); });
    loop.run();
    other.join();
    EXPECT_FALSE(loop.runOne());
  }
}

TEST(IoLoop, DropsAnyNumberOfTasksWhenDestroyed) {
  IoLoop loop;
  for (int i = 0; i < 300'000; ++i) loop.post([] { ADD_FAILURE(); });
}

TEST(IoLoop, SaysThatItHasNoDescriptor) {
  const int lowest = Descriptor(::dup(0)).get();
  const auto before = support::openDescriptors();
  for (const int more : {0, 1, 2}) {
    const support::SoftLimit full(RLIMIT_NOFILE, static_cast<rlim_t>(lowest + more));
    try {
      const IoLoop loop;
      ADD_FAILURE() << more;
    } catch (const Error& error) {
      EXPECT_STREQ(error.what(), "cannot open the event loop: Too many open files");
    }
  }
  EXPECT_EQ(support::openDescriptors(), before);
}

TEST(IoLoopWatch, ReportsAnEventUntilItIsOver) {
  IoLoop loop;
  const Sockets sockets;
  int ran = 0;
  const IoLoop::Watch watch(loop, sockets.own.get(), EPOLLIN, [&](auto) {
    if (++ran == 2) sockets.receive();
  });
  sockets.send();
  EXPECT_EQ(loop.runAllReady(), 2U);
}

TEST(IoLoopWatch, IsSilentWhileItAwaitsNothing) {
  IoLoop loop;
  Sockets sockets;
  std::uint32_t reported = 0;
  IoLoop::Watch watch(loop, sockets.own.get(), EPOLLIN, [&](std::uint32_t events) {
    reported = events;
    watch.await(0);
  });
  sockets.send();
  EXPECT_EQ(loop.runAllReady(), 1U);
  sockets.other.reset();
  EXPECT_EQ(loop.runAllReady(), 0U);
  watch.await(EPOLLHUP);
  EXPECT_EQ(loop.runAllReady(), 1U);
  EXPECT_NE(reported & EPOLLHUP, 0U);
}

TEST(IoLoopWatch, AwaitsAHangUpAlone) {
  IoLoop loop;
  Sockets sockets;
  int ran = 0;
  IoLoop::Watch watch(loop, sockets.own.get(), EPOLLHUP, [&](auto) {
    ++ran;
    watch.await(0);
  });
  sockets.send();
  ::shutdown(sockets.other.get(), SHUT_WR);
  EXPECT_EQ(loop.runAllReady(), 0U);
  sockets.other.reset();
  EXPECT_EQ(loop.runAllReady(), 1U);
  EXPECT_EQ(ran, 1);
}

TEST(IoLoopWatch, MayBeDestroyedWhileItsEventWaits) {
  IoLoop loop;
  const Sockets first;
  const Sockets second;
  std::optional<IoLoop::Watch> one;
  std::optional<IoLoop::Watch> two;
  int ran = 0;
  const auto endBoth = [&] {
    ++ran;
    one.reset();
    two.reset();
  };
  one.emplace(loop, first.own.get(), EPOLLIN, [&endBoth](auto) { endBoth(); });
  two.emplace(loop, second.own.get(), EPOLLIN, [&endBoth](auto) { endBoth(); });
  first.send();
  second.send();
  EXPECT_EQ(loop.runAllReady(), 1U);
  EXPECT_EQ(ran, 1);
}

TEST(IoLoopWatch, SaysWhyADescriptorCannotBeAwaited) {
  IoLoop loop;
  try {
    const IoLoop::Watch watch(loop, -1, EPOLLIN, [](auto) {});
    ADD_FAILURE();
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(), "cannot wait for a descriptor: Bad file descriptor");
  }
}

TEST(IoLoopWatchUntilDone, ClosesTheDescriptorAfterItsLastMessage) {
  IoLoop loop;
  Sockets sockets;
  const int own = sockets.own.get();
  int messages = 0;
  loop.watchUntilDone(std::move(sockets.own), [&, own] {
    char byte = 0;
    return ::read(own, &byte, 1) == 1 && ++messages < 2;
  });
  sockets.send();
  sockets.send();
  EXPECT_EQ(loop.runAllReady(), 2U);
  char byte = 0;
  EXPECT_EQ(::read(sockets.other.get(), &byte, 1), 0) << "closed";
}

TEST(IoLoopWatchUntilDone, ClosesTheDescriptorAfterAnException) {
  IoLoop loop;
  Sockets sockets;
  loop.watchUntilDone(std::move(sockets.own), []() -> bool { throw std::bad_alloc(); });
  ::shutdown(sockets.other.get(), SHUT_WR);
  EXPECT_THROW(loop.runOne(), std::bad_alloc);
  char byte = 0;
  EXPECT_EQ(::read(sockets.other.get(), &byte, 1), 0) << "closed";
  EXPECT_EQ(loop.runAllReady(), 0U);
}

TEST(IoLoopWatchUntilDone, ClosesTheDescriptorWithTheLoop) {
  const Sockets sockets;
  const auto before = support::openDescriptors();
  {
    IoLoop loop;
    loop.watchUntilDone(Descriptor(::dup(sockets.own.get())), [] { return true; });
  }
  EXPECT_EQ(support::openDescriptors(), before);
}

TEST(IoLoopWatchUntilDone, MayPostATaskFromTheDestructorOfItsHandler) {
  Sockets sockets;
  const auto task = std::make_shared<IoLoop::Task>([] {});
  {
    IoLoop loop;
    std::shared_ptr<void> posts(nullptr, [&](void*) { loop.post(task); });
    loop.watchUntilDone(std::move(sockets.own), [posts = std::move(posts)] { return true; });
  }
  EXPECT_EQ(task.use_count(), 1) << "the loop keeps the task";
}

}  // namespace
}  // namespace host
