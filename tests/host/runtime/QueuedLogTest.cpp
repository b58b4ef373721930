#include "runtime/QueuedLog.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "base/Descriptor.h"
#include "base/LogLevels.h"
#include "runtime/LogLine.h"
#include "support/InChild.h"
#include "support/NewThreads.h"
#include "support/NoMemory.h"
#include "support/NoThreads.h"

namespace host {
namespace {

using namespace std::chrono_literals;

// Logs to a pipe that the test reads.
class QueuedLogOnAPipe : public ::testing::Test {
 protected:
  QueuedLogOnAPipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) std::abort();
    m_read.reset(ends[0]);
    m_write.reset(ends[1]);
  }

  [[nodiscard]] int descriptor() const { return m_write.get(); }

  // Waits until there is something to read.
  std::string readSome() const {
    std::array<char, 65536> bytes{};
    const ssize_t length = ::read(m_read.get(), bytes.data(), bytes.size());
    return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
  }

  // Reads until the text has arrived.
  std::string readUntil(const std::string& text) const {
    std::string all;
    while (all.find(text) == std::string::npos) {
      const std::string more = readSome();
      if (more.empty()) return all;
      all += more;
    }
    return all;
  }

  // Closes the log's end and reads what is left.
  std::string readAll() {
    m_write.reset();
    std::string all;
    for (std::string more = readSome(); !more.empty(); more = readSome()) all += more;
    return all;
  }

  // Until not one more byte fits.
  void fill() const {
    setNonBlocking(true);
    const std::string page(4096, '.');
    while (::write(descriptor(), page.data(), page.size()) > 0 ||
           ::write(descriptor(), page.data(), 1) > 0) {
    }
    setNonBlocking(false);
  }

  void setNonBlocking(bool on) const { fcntl(descriptor(), F_SETFL, on ? O_NONBLOCK : 0); }

  Descriptor m_read;
  Descriptor m_write;
};

LogEntry entryAt(int line, const std::string& text) {
  return {.wall = 1466035201s,
          .level = 4,
          .component = "ClockService",
          .file = "f.cpp",
          .line = line,
          .text = text};
}

std::size_t countOf(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

std::size_t allocationsToFormat(const LogEntry& entry) {
  for (std::size_t number = 0;; ++number) {
    const support::NoMemory none(number);
    try {
      static_cast<void>(logLine(entry, LogStyle::plain));
      return number;
    } catch (const std::bad_alloc&) {
    }
  }
}

constexpr std::string_view kGap = " lines dropped here: standard error was not read\n";

// The sum of all reported gaps.
std::size_t droppedLines(const std::string& all) {
  std::size_t sum = 0;
  for (auto at = all.find(kGap); at != all.npos; at = all.find(kGap, at + 1)) {
    sum += std::stoul(all.substr(all.find_last_not_of("0123456789", at - 1) + 1));
  }
  return sum;
}

TEST_F(QueuedLogOnAPipe, WritesAllQueuedLinesAtItsEnd) {
  std::string expected;
  {
    QueuedLog log(descriptor());
    for (int i = 0; i < 300; ++i) {
      log.write(entryAt(i, "line " + std::to_string(i)));
      expected += "2016-06-16T00:00:01Z note     ClockService: line " + std::to_string(i) + "\n";
    }
  }
  EXPECT_EQ(readAll(), expected);
}

TEST_F(QueuedLogOnAPipe, WritesALineAtOnce) {
  QueuedLog log(descriptor());
  log.start();
  log.write(entryAt(1, "now"));
  EXPECT_EQ(readUntil("\n"), "2016-06-16T00:00:01Z note     ClockService: now\n");
}

TEST_F(QueuedLogOnAPipe, QueuesLinesUntilItsStart) {
  const support::NewThreads started;
  QueuedLog log(descriptor());
  log.write(entryAt(1, "early"));
  EXPECT_EQ(started.count(), 0);
  for (int i = 0; i < 2; ++i) log.start();
  EXPECT_EQ(started.count(), 1);
  EXPECT_EQ(countOf(readUntil("\n"), "early\n"), 1U);
}

TEST_F(QueuedLogOnAPipe, AWarningStartsIt) {
  QueuedLog log(descriptor());
  log.write(entryAt(1, "early"));
  LogEntry warning = entryAt(2, "warning");
  warning.level = kLogWarning;
  log.write(warning);
  EXPECT_EQ(countOf(readUntil("warning\n"), "early\n"), 1U);
}

TEST_F(QueuedLogOnAPipe, WritesItsLinesAtItsEndWithoutAThread) {
  const int status = support::statusInChild([this]() noexcept {
    support::refuseThreads();
    QueuedLog log(descriptor());
    log.write(entryAt(1, "early"));
    return 0;
  });
  EXPECT_EQ(status, 0);
  EXPECT_THAT(readAll(), ::testing::MatchesRegex(
                             "2016-06-16T00:00:01Z note     ClockService: early\n"
                             "clockhost: cannot start the writer of the log: [a-zA-Z ]+\n"));
}

// Each line has a place of its own, so that none is suppressed. There are two gaps if the thread
// takes its first lines late.
TEST_F(QueuedLogOnAPipe, DropsLinesWhileThePipeIsFullAndReportsTheirNumber) {
  constexpr std::size_t kLines = 20'000;
  fill();
  std::optional<QueuedLog> log(descriptor());
  log->start();
  for (std::size_t i = 0; i < kLines; ++i) log->write(entryAt(static_cast<int>(i), "same text"));
  std::string all;
  while (countOf(all, "same text") + droppedLines(all) < kLines) all += readSome();
  EXPECT_EQ(countOf(all, "same text") + droppedLines(all), kLines);
  EXPECT_LE(countOf(all, kGap), 2U);
  EXPECT_GT(all.size(), QueuedLog::kMostWaiting);
  log->write(entryAt(1, "later"));
  log.reset();
  EXPECT_EQ(readAll(), "2016-06-16T00:00:01Z note     ClockService: later\n");
}

// While the thread writes the first long line, the second is queued in the other buffer.
TEST_F(QueuedLogOnAPipe, QueuesLinesWithoutAllocating) {
  fcntl(descriptor(), F_SETPIPE_SZ, 4096);
  const LogEntry longOne = entryAt(1, std::string(20'000, 'x'));
  const std::size_t toFormat = allocationsToFormat(longOne);
  QueuedLog log(descriptor());
  log.start();
  log.write(entryAt(1, "the first line of a place takes memory"));
  const auto writeLongOne = [&] {
    const support::NoMemory none(toFormat);
    log.write(longOne);
  };
  ASSERT_NO_THROW(writeLongOne());
  std::string all = readUntil("xxx");
  ASSERT_NO_THROW(writeLongOne());
  while (countOf(all, "\n") < 3) all += readSome();
  EXPECT_EQ(countOf(all, longOne.text + "\n"), 2U);
}

TEST_F(QueuedLogOnAPipe, EndsWithinTheLimitWhenThePipeIsFull) {
  fill();
  const auto begun = std::chrono::steady_clock::now();
  {
    QueuedLog log(descriptor());
    log.write(entryAt(1, "never read"));
  }
  EXPECT_GE(std::chrono::steady_clock::now() - begun, QueuedLog::kLongestEnd);
  readUntil("never read\n");  // so that the detached thread no longer uses the pipe
}

TEST_F(QueuedLogOnAPipe, EndsWithoutDelayWhenTheReaderIsGone) {
  m_read.reset();
  auto shortest = std::chrono::steady_clock::duration::max();
  for (int i = 0; i < 5; ++i) {  // any of them may be delayed by others' work
    const auto begun = std::chrono::steady_clock::now();
    {
      QueuedLog log(descriptor());
      log.write(entryAt(1, "lost"));
    }
    shortest = std::min(shortest, std::chrono::steady_clock::now() - begun);
  }
  EXPECT_LT(shortest, QueuedLog::kLongestEnd);
}

TEST_F(QueuedLogOnAPipe, WaitsForRoomInANonBlockingPipe) {
  fill();
  setNonBlocking(true);
  QueuedLog log(descriptor());
  log.start();
  log.write(entryAt(1, "behind"));
  EXPECT_EQ(countOf(readUntil("behind\n"), "behind\n"), 1U);
}

TEST_F(QueuedLogOnAPipe, ReportsTheNumberOfSuppressedLinesAtItsEnd) {
  {
    const LogLimitBySource::Clock::time_point now{};
    QueuedLog log(descriptor(), LogLimitBySource(3, 10s), [now] { return now; });
    for (int i = 0; i < 10; ++i) log.write(entryAt(7, "noisy"));
    log.write(entryAt(8, "quiet"));
  }
  const std::string all = readAll();
  EXPECT_EQ(countOf(all, "noisy"), 3U);
  EXPECT_EQ(countOf(all, "quiet"), 1U);
  EXPECT_EQ(countOf(all, "7 lines suppressed of ClockService: f.cpp:7"), 1U) << all;
}

TEST_F(QueuedLogOnAPipe, ReportsTheNumberOfSuppressedLinesWithoutAnotherEntry) {
  constexpr auto kWindow = 5ms;
  std::atomic<LogLimitBySource::Clock::duration> time{1000s};
  QueuedLog log(descriptor(), LogLimitBySource(1, kWindow),
                [&time] { return LogLimitBySource::Clock::time_point(time); });
  log.start();
  log.write(entryAt(7, "noisy"));
  log.write(entryAt(7, "noisy"));
  time = 1000s + kWindow;
  EXPECT_EQ(countOf(readUntil("lines in 0 s\n"), "1 lines suppressed"), 1U);
}

}  // namespace
}  // namespace host
