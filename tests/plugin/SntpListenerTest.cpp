// What the listener reads from the pipe of the NTP client's reports, which is a real pipe here.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "plugin/ListenerFixtures.h"
#include "support/ZoneGuard.h"

namespace {

using plugin::ListenerNotStarted;
using plugin::ListenerRunning;
using testing::ElementsAre;

TEST_F(ListenerNotStarted, LogsItsConstructionItsStartAndItsEnd) {
  EXPECT_TRUE(log.has(5, "NTPClientThread is constructed"));
  EXPECT_FALSE(log.hasPart("NTP Client Thread has been started"));
  listener->start();
  EXPECT_TRUE(log.waitForPart("NTP Client Thread has been started"));
  end();
  EXPECT_TRUE(log.has(5, "NTP Client Thread finished"));
}

TEST_F(ListenerRunning, ReportsTheSecondsAndLogsThem) {
  const support::ZoneGuard zone("LOC-1:00");
  reports.hold(true);  // the line comes before the report
  pipe.report(1'709'168'523);
  EXPECT_THAT(reports.first(1), ElementsAre(1'709'168'523));
  EXPECT_TRUE(log.has(5,
                      "Time change message received from ntpclient EPOC: 1709168523  CTIME: "
                      "Thu Feb 29 02:02:03 2024\n"));
  reports.hold(false);
}

TEST_F(ListenerRunning, ReportsEveryNumberButZero) {
  pipe.report(0);
  for (const std::uint32_t number : {1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    pipe.report(number);
    EXPECT_TRUE(log.waitForPart("EPOC: " + std::to_string(number) + "  CTIME"));
  }
  EXPECT_THAT(reports.first(4), ElementsAre(1, 0x7FFFFFFF, static_cast<long>(0x80000000U),
                                            static_cast<long>(0xFFFFFFFFU)));
  EXPECT_FALSE(log.hasPart("EPOC: 0 "));
}

// While the first report is held, the listener cannot open the pipe again before the writer closes.
TEST_F(ListenerRunning, ReadsOneNumberInEachOpening) {
  using support::ListenerPipe;
  std::vector<long> expected;
  for (const std::string& more : {ListenerPipe::bytesOf(8), std::string("x")}) {
    reports.hold(true);
    pipe.write(ListenerPipe::bytesOf(7) + more);
    reports.hold(false);
    pipe.report(9);
    expected.insert(expected.end(), {7, 9});
    EXPECT_EQ(reports.first(expected.size()), expected);
  }
}

TEST_F(ListenerRunning, ReportsTheBytesOfAShortMessage) {
  for (const std::size_t length : {1U, 2U, 3U}) {
    std::string bytes(length, '\0');
    bytes[0] = static_cast<char>(length);
    pipe.write(bytes);
    EXPECT_TRUE(log.waitForPart("EPOC: " + std::to_string(length) + "  CTIME")) << length;
  }
  EXPECT_THAT(reports.first(3), ElementsAre(1, 2, 3));
}

// Fills the pipe, at the largest capacity that the system allows.
void fill(int writer) {
  constexpr int kMostOfAPipe = 1 << 20;
  fcntl(writer, F_SETPIPE_SZ, kMostOfAPipe);
  fcntl(writer, F_SETFL, O_NONBLOCK);
  const std::string page(4096, '8');
  while (write(writer, page.data(), page.size()) > 0) continue;
}

// The bytes belong to one opening even while the writer keeps its end open.
TEST_F(ListenerRunning, DropsTheRestOfAnOpening) {
  const int writer = open(support::ListenerPipe::path().c_str(), O_WRONLY | O_CLOEXEC);
  // Keeps writes from failing while the listener has the pipe closed.
  const int reader = open(support::ListenerPipe::path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  const auto send = [writer](std::uint32_t number) {
    ASSERT_EQ(write(writer, support::ListenerPipe::bytesOf(number).data(), 4), 4);
  };
  reports.hold(true);
  send(7);
  ASSERT_THAT(reports.first(1), ElementsAre(7));
  fill(writer);
  reports.hold(false);
  plugin::awaitCloses(1);
  send(9);
  EXPECT_THAT(reports.first(2), ElementsAre(7, 9));
  plugin::awaitCloses(2);
  close(reader);
  close(writer);
}

TEST_F(ListenerRunning, StopsReadingFromAWriterThatNeverStops) {
  plugin::makeReadsEndless();
  pipe.report(7);
  pipe.report(8);
  EXPECT_THAT(reports.first(2), ElementsAre(7, 8));
  EXPECT_EQ(plugin::mostDropped(), 1U << 20);
}

// A child process must not hold the pipe open.
TEST_F(ListenerRunning, DoesNotPassThePipeToChildProcesses) {
  reports.hold(true);
  pipe.report(7);
  ASSERT_THAT(reports.first(1), ElementsAre(7));
  const std::vector<int> flags = support::descriptorFlagsOf(support::ListenerPipe::path());
  EXPECT_THAT(flags, ElementsAre(FD_CLOEXEC));
  reports.hold(false);
}

TEST_F(ListenerRunning, SkipsAWriterThatOnlyOpensAndCloses) {
  for (int i = 0; i < 3; ++i) pipe.write("");
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
  EXPECT_FALSE(log.hasPart("Read failed"));
}

TEST_F(ListenerNotStarted, TriesAgainUntilThereIsAPipe) {
  support::removeReportPipe();
  listener->start();
  const std::string complaint =
      "Cannot open " + support::ListenerPipe::path() + ": No such file or directory\n";
  ASSERT_TRUE(log.waitForPart(complaint));
  EXPECT_TRUE(log.has(2, complaint));
  support::makeReportPipe();
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
  EXPECT_THAT(plugin::sleeps(), ElementsAre(1));
}

TEST_F(ListenerRunning, LogsReadErrors) {
  plugin::failReads(EIO);
  pipe.report(6);
  ASSERT_TRUE(log.waitForPart("Read failed: Input/output error"));
  EXPECT_TRUE(log.has(2, "Read failed: Input/output error"));
  plugin::awaitCloses(2);  // the writer's and the listener's
  EXPECT_THAT(plugin::sleeps(), ElementsAre(1));
  plugin::failReads(0);
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
}

// The listener waits in the old pipe and opens the new one next.
TEST_F(ListenerRunning, FollowsAPipeThatIsReplacedWhileItWaits) {
  pipe.report(6);
  ASSERT_THAT(reports.first(1), ElementsAre(6));
  const std::string path = support::ListenerPipe::path();
  const std::string old = path + ".old";
  std::filesystem::remove(old);
  std::filesystem::rename(path, old);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  // Wakes the listener if it waits in the old pipe.
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

}  // namespace
