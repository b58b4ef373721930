// Destroying the listener: while it waits in its pipe, while it reports, and when it never started.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <string>
#include <thread>

#include "plugin/ListenerFixtures.h"
#include "support/OpenWatch.h"
#include "support/WaitingCall.h"

namespace {

using plugin::ListenerNotStarted;
using plugin::ListenerRunning;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ListenerNotStarted, LeavesThePipeAloneWhenItIsDestroyed) {
  const int held = open(support::ListenerPipe::path().c_str(), O_RDWR | O_NONBLOCK);
  ASSERT_GE(held, 0);
  const std::string waiting = support::ListenerPipe::bytesOf(1'709'168'523);
  ASSERT_EQ(write(held, waiting.data(), waiting.size()), 4);
  const support::OpenWatch watch(support::ListenerPipe::path());
  listener.reset();
  EXPECT_FALSE(watch.sees());
  int bytes = 0;
  EXPECT_EQ(ioctl(held, FIONREAD, &bytes), 0);
  EXPECT_EQ(bytes, 4);
  close(held);
  EXPECT_FALSE(log.hasPart("NTP Client Thread finished"));
}

TEST_F(ListenerNotStarted, IsDestroyedAtOnceWithoutAPipe) {
  support::removeReportPipe();
  listener.reset();
  EXPECT_FALSE(log.hasPart("Cannot open"));
}

TEST_F(ListenerNotStarted, IsDestroyedWhileItLooksForThePipe) {
  support::removeReportPipe();
  listener->start();
  ASSERT_TRUE(log.waitForPart("Cannot open " + support::ListenerPipe::path()));
  listener.reset();
  EXPECT_TRUE(log.has(5, "NTP Client Thread finished"));
}

// Without a writer the thread's own open does not return, so the open that is seen is the attempt
// to wake it.
TEST_F(ListenerRunning, IsDestroyedWhenAWriterEndsItsWait) {
  ASSERT_TRUE(log.waitForPart("NTP Client Thread has been started"));
  const support::OpenWatch watch(support::ListenerPipe::path());
  std::atomic<bool> destroyed{false};
  std::thread destruction([&] {
    listener.reset();
    destroyed = true;
  });
  EXPECT_TRUE(watch.sees(std::chrono::seconds{10}));
  while (!destroyed) {
    const int writer = open(support::ListenerPipe::path().c_str(), O_WRONLY | O_NONBLOCK);
    if (writer >= 0) close(writer);
    std::this_thread::yield();
  }
  destruction.join();
  EXPECT_TRUE(log.has(5, "NTP Client Thread finished"));
  EXPECT_THAT(reports.first(0), IsEmpty());
  EXPECT_THAT(support::descriptorFlagsOf(support::ListenerPipe::path()), IsEmpty());
}

// A listener that is stopped while it waits in its read, and then receives a message.
class ListenerWaitingInItsRead : public ListenerRunning {
 protected:
  ListenerWaitingInItsRead() {
    while (support::descriptorFlagsOf(support::ListenerPipe::path()).size() < 2)
      std::this_thread::yield();
  }
  ~ListenerWaitingInItsRead() override { close(m_holder); }
  ListenerWaitingInItsRead(const ListenerWaitingInItsRead&) = delete;
  ListenerWaitingInItsRead& operator=(const ListenerWaitingInItsRead&) = delete;

  void endAndWrite(const std::string& bytes = support::ListenerPipe::bytesOf(7)) {
    const support::OpenWatch watch(support::ListenerPipe::path());
    std::thread destruction([this] { listener.reset(); });
    EXPECT_TRUE(watch.sees(std::chrono::seconds{10}));  // the destructor tries to wake it
    EXPECT_EQ(write(m_holder, bytes.data(), bytes.size()), bytes.size());
    destruction.join();
  }
  [[nodiscard]] int bytesInThePipe() const {
    int bytes = 0;
    ioctl(m_holder, FIONREAD, &bytes);
    return bytes;
  }

 private:
  const int m_holder = open(support::ListenerPipe::path().c_str(), O_RDWR | O_CLOEXEC);
};

TEST_F(ListenerWaitingInItsRead, IgnoresAMessageThatArrivesAfterItIsStopped) {
  endAndWrite();
  EXPECT_FALSE(log.hasPart("EPOC"));
  EXPECT_THAT(reports.first(0), IsEmpty());
}

// By design it drops nothing and closes the pipe only with its thread.
TEST_F(ListenerWaitingInItsRead, LeavesTheRestInThePipeAfterItIsStopped) {
  endAndWrite(std::string(9, 'x'));
  EXPECT_EQ(bytesInThePipe(), 5);
}

TEST_F(ListenerWaitingInItsRead, LogsNoReadErrorAfterItIsStopped) {
  plugin::failReads(EIO);
  endAndWrite();
  EXPECT_FALSE(log.hasPart("Read failed"));
  EXPECT_THAT(plugin::sleeps(), IsEmpty());
}

// By design the stop signal is written through a descriptor that is open for reading only.
TEST_F(ListenerWaitingInItsRead, IsNotWokenByTheStopSignal) {
  endAndWrite();
  EXPECT_EQ(plugin::failedStopWrites(), 1);
}

// A second close could close a descriptor that another thread has just opened.
TEST_F(ListenerRunning, ClosesItsPipeOnceWhenItEndsAfterAReport) {
  reports.hold(true);
  pipe.report(7);
  ASSERT_THAT(reports.first(1), ElementsAre(7));
  plugin::resetCalls();
  const support::OpenWatch watch(support::ListenerPipe::path());
  std::thread destruction([this] { listener.reset(); });
  EXPECT_TRUE(watch.sees(std::chrono::seconds{10}));  // the destructor tries to wake it
  reports.hold(false);
  destruction.join();
  EXPECT_EQ(plugin::closes(), 2);  // the listener's and the destructor's
}

TEST_F(ListenerRunning, ReportsNothingAfterItsObserverIsReleased) {
  listener->releaseObserver();
  pipe.report(7);
  EXPECT_TRUE(log.waitForPart("EPOC: 7  CTIME"));
  end();
  EXPECT_THAT(reports.first(0), IsEmpty());
}

TEST_F(ListenerRunning, ReleasesItsObserverOnlyAfterTheCurrentReport) {
  reports.hold(true);
  pipe.report(7);
  ASSERT_THAT(reports.first(1), ElementsAre(7));
  const support::WaitingCall releasing([this] { listener->releaseObserver(); });
  EXPECT_TRUE(releasing.waits());
  reports.hold(false);
}

}  // namespace
