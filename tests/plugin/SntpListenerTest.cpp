// The listener on the pipe of the NTP client's reports, with a real pipe.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>

#include "SNTPTimeChangeObserver.h"
#include "plugin/ReportPipe.h"
#include "support/LogCapture.h"
#include "support/ZoneGuard.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Keeps what the listener reports; the test waits for it, and may hold it up.
class Reports final : public SNTPTimeChangeObserver {
 public:
  void handleSNTPClientUpdate(long secondsSinceEpoch) override {
    std::unique_lock lock(m_mutex);
    m_values.push_back(secondsSinceEpoch);
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !m_held; });
  }

  // The first `count` reports; fewer when they did not come within ten seconds.
  std::vector<long> first(std::size_t count) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::seconds{10}, [&] { return m_values.size() >= count; });
    return m_values;
  }
  void hold(bool held) {
    const std::lock_guard lock(m_mutex);
    m_held = held;
    m_changed.notify_all();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<long> m_values;
  bool m_held = false;
};

// A pipe, and a listener that is not started yet.
class ListenerNotStarted : public testing::Test {
 protected:
  ~ListenerNotStarted() override { end(); }

  void end() {
    pipe.release();
    listener.reset();
  }

  support::LogCapture log{6};
  Reports reports;
  plugin::ReportPipe pipe;
  std::unique_ptr<SNTPClientThread> listener = std::make_unique<SNTPClientThread>(&reports);
};

class ListenerRunning : public ListenerNotStarted {
 protected:
  ListenerRunning() { listener->start(); }
};

TEST_F(ListenerNotStarted, SaysThatItIsThere) {
  EXPECT_TRUE(log.has(5, "NTPClientThread is constructed"));
  EXPECT_FALSE(log.hasPart("NTP Client Thread has been started"));
}

TEST_F(ListenerNotStarted, LeavesThePipeAloneWhenItIsDestroyed) {
  const int held = open(plugin::ReportPipe::path().c_str(), O_RDWR | O_NONBLOCK);
  ASSERT_GE(held, 0);
  const std::string waiting = plugin::ReportPipe::bytesOf(1'709'168'523);
  ASSERT_EQ(write(held, waiting.data(), waiting.size()), 4);
  listener.reset();
  int bytes = 0;
  EXPECT_EQ(ioctl(held, FIONREAD, &bytes), 0);
  EXPECT_EQ(bytes, 4);
  close(held);
  EXPECT_FALSE(log.hasPart("NTP Client Thread finished"));
}

TEST_F(ListenerNotStarted, IsDestroyedAtOnceWithoutAPipe) {
  plugin::removeReportPipe();
  listener.reset();
  EXPECT_FALSE(log.hasPart("Cannot open"));
}

TEST_F(ListenerRunning, SaysWhenItStartsAndEnds) {
  EXPECT_TRUE(log.waitForPart("NTP Client Thread has been started"));
  end();
  EXPECT_TRUE(log.has(5, "NTP Client Thread finished"));
}

TEST_F(ListenerRunning, ReportsTheSecondsAndLogsThem) {
  const support::ZoneGuard zone("LOC-1:00");
  pipe.report(1'709'168'523);
  EXPECT_THAT(reports.first(1), ElementsAre(1'709'168'523));
  EXPECT_TRUE(log.has(5,
                      "Time change message received from ntpclient EPOC: 1709168523  CTIME: "
                      "Thu Feb 29 02:02:03 2024\n"));
}

TEST_F(ListenerRunning, ReportsEveryNumberButZero) {
  for (const std::uint32_t number : {1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    pipe.report(number);
    EXPECT_TRUE(log.waitForPart("EPOC: " + std::to_string(number) + "  CTIME"));
  }
  EXPECT_THAT(reports.first(4), ElementsAre(1, 0x7FFFFFFF, static_cast<long>(0x80000000U),
                                            static_cast<long>(0xFFFFFFFFU)));
}

TEST_F(ListenerRunning, NeverReportsZero) {
  pipe.report(0);
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
  EXPECT_FALSE(log.hasPart("EPOC: 0 "));
}

// Holding the first report keeps the listener from coming back before the writer is gone.
TEST_F(ListenerRunning, ReadsOneNumberOfEachOpening) {
  reports.hold(true);
  pipe.write(plugin::ReportPipe::bytesOf(7) + plugin::ReportPipe::bytesOf(8));
  reports.hold(false);
  pipe.report(9);
  EXPECT_THAT(reports.first(2), ElementsAre(7, 9));
}

TEST_F(ListenerRunning, TakesWhatThereIsOfAShortMessage) {
  for (const std::size_t length : {1U, 2U, 3U}) {
    std::string bytes(length, '\0');
    bytes[0] = static_cast<char>(length);
    pipe.write(bytes);
    EXPECT_TRUE(log.waitForPart("EPOC: " + std::to_string(length) + "  CTIME")) << length;
  }
  EXPECT_THAT(reports.first(3), ElementsAre(1, 2, 3));
}

TEST_F(ListenerRunning, IgnoresTheFifthByte) {
  reports.hold(true);
  pipe.write(plugin::ReportPipe::bytesOf(7) + "x");
  reports.hold(false);
  pipe.report(8);
  EXPECT_THAT(reports.first(2), ElementsAre(7, 8));
}

TEST_F(ListenerRunning, SkipsAWriterThatOnlyOpensAndCloses) {
  for (int i = 0; i < 3; ++i) pipe.write("");
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
  EXPECT_FALSE(log.hasPart("Read failed"));
}

TEST_F(ListenerNotStarted, TriesAgainUntilThereIsAPipe) {
  plugin::removeReportPipe();
  listener->start();
  const std::string complaint =
      "Cannot open " + plugin::ReportPipe::path() + ": No such file or directory\n";
  ASSERT_TRUE(log.waitForPart(complaint));
  EXPECT_TRUE(log.has(2, complaint));
  plugin::makeReportPipe();
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
}

TEST_F(ListenerNotStarted, SaysWhatItCannotRead) {
  plugin::removeReportPipe();
  std::filesystem::create_directory(plugin::ReportPipe::path());
  listener->start();
  ASSERT_TRUE(log.waitForPart("Read failed: Is a directory"));
  EXPECT_TRUE(log.has(2, "Read failed: Is a directory"));
  plugin::makeReportPipe();
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
}

// It waits in the pipe that was there; it comes to the new one with the next opening.
TEST_F(ListenerRunning, FollowsAPipeThatIsReplacedWhileItWaits) {
  pipe.report(6);
  ASSERT_THAT(reports.first(1), ElementsAre(6));
  const std::string path = plugin::ReportPipe::path();
  const std::string old = path + ".old";
  std::filesystem::remove(old);
  std::filesystem::rename(path, old);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  // whichever of the two it waits in, this wakes it
  std::atomic<bool> heard{false};
  std::thread wakeUp([&] {
    while (!heard) {
      const int pipeBefore = open(old.c_str(), O_WRONLY | O_NONBLOCK);
      if (pipeBefore >= 0) close(pipeBefore);
      std::this_thread::yield();
    }
  });
  pipe.report(7);
  EXPECT_THAT(reports.first(2), ElementsAre(6, 7));
  heard = true;
  wakeUp.join();
}

TEST_F(ListenerRunning, IsDestroyedWhileItWaitsOnceAWriterWakesIt) {
  ASSERT_TRUE(log.waitForPart("NTP Client Thread has been started"));
  std::atomic<bool> destroyed{false};
  std::thread destruction([&] {
    listener.reset();
    destroyed = true;
  });
  while (!destroyed) {
    const int writer = open(plugin::ReportPipe::path().c_str(), O_WRONLY | O_NONBLOCK);
    if (writer >= 0) close(writer);
    std::this_thread::yield();
  }
  destruction.join();
  EXPECT_TRUE(log.has(5, "NTP Client Thread finished"));
  EXPECT_THAT(reports.first(0), IsEmpty());
}

TEST_F(ListenerRunning, CallsNobodyOnceItHasLetGoOfItsObserver) {
  listener->releaseObserver();
  pipe.report(7);
  EXPECT_TRUE(log.waitForPart("EPOC: 7  CTIME"));
  end();
  EXPECT_THAT(reports.first(0), IsEmpty());
}

TEST_F(ListenerRunning, IsLetGoOfOnlyAfterTheReportUnderWay) {
  reports.hold(true);
  pipe.report(7);
  ASSERT_THAT(reports.first(1), ElementsAre(7));
  std::atomic<bool> released{false};
  std::thread releasing([&] {
    listener->releaseObserver();
    released = true;
  });
  EXPECT_FALSE(released);
  reports.hold(false);
  releasing.join();
  EXPECT_TRUE(released);
}

}  // namespace
