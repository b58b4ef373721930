#include "Logging.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "clock/VirtualClock.h"
#include "framework/ApplicationLog.h"
#include "support/LogCapture.h"

namespace {

using namespace std::chrono_literals;
using host::ApplicationLog;

void log(int level, const std::string& text) {
  logAppUni("Part", level, "file.cpp", 7, "%s", text.c_str());
}

class Log : public testing::Test {
 protected:
  ~Log() override { ApplicationLog::instance().setLevel(m_before); }
  const int m_before = ApplicationLog::instance().level();
};

TEST_F(Log, IsAtLevelFourByDefault) {
  EXPECT_EQ(ApplicationLog::kDefaultLevel, 4);
  ApplicationLog::instance().setLevel(ApplicationLog::kDefaultLevel);
  EXPECT_TRUE(loggingOnAppUni("any", 4));
  EXPECT_FALSE(loggingOnAppUni("any", 5));
  EXPECT_EQ(TraceProfile::GetLevel("any"), 4);
}

TEST_F(Log, HasSevenLevels) {
  ApplicationLog::instance().setLevel(7);
  EXPECT_EQ(ApplicationLog::instance().level(), 6);
  ApplicationLog::instance().setLevel(-1);
  EXPECT_EQ(ApplicationLog::instance().level(), 0);
}

TEST_F(Log, RecordsTimeAndNumberOfAnEntry) {
  host::VirtualClock clock;
  ASSERT_TRUE(clock.setWall(1234s));
  const host::ProcessClock processClock(clock);
  const support::LogCapture capture(5);
  log(5, "text");
  ASSERT_EQ(capture.entries().size(), 1U);
  const host::LogEntry entry = capture.entries().front();
  EXPECT_EQ(entry.wall, 1234s);
  EXPECT_FALSE(entry.systemLog);
  EXPECT_GT(entry.number, 0U);
}

TEST_F(Log, HasTheMachinesTimeWithoutAVirtualClock) {
  const support::LogCapture capture;
  const auto before = std::chrono::system_clock::now().time_since_epoch();
  log(1, "x");
  EXPECT_GE(capture.entries().front().wall, before);
}

TEST_F(Log, NumbersTheEntriesThatItKeepsWithoutGaps) {
  const support::LogCapture capture(2);
  log(2, "first");
  log(3, "dropped");
  log(1, "second");
  ASSERT_EQ(capture.entries().size(), 2U);
  EXPECT_EQ(capture.entries()[1].number, capture.entries()[0].number + 1);
}

TEST_F(Log, ClipsLongTextsBetweenCharactersAndShowsTheirLength) {
  const support::LogCapture capture;
  const std::string longest(1024, 'x');
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {std::string(256, 'x'), std::string(256, 'x')},
      {longest, longest},
      {longest + "y", longest + "... (1025 bytes)"},
      {std::string(4'000'000, 'x'), longest + "... (4000000 bytes)"},
      {std::string(1023, 'x') + "\xc3\xbc and more", std::string(1023, 'x') + "... (1034 bytes)"},
  };
  for (const auto& [text, kept] : rows) {
    log(1, text);
    EXPECT_EQ(capture.entries().back().text, kept);
    syslogger_notice("%s", text.c_str());
    EXPECT_EQ(capture.entries().back().text, kept);
  }
}

TEST_F(Log, AcceptsMissingNames) {
  const support::LogCapture capture;
  logAppUni(nullptr, 1, nullptr, 0, "text");
  EXPECT_EQ(capture.entries().front().component, "");
  EXPECT_EQ(capture.entries().front().file, "");
}

TEST_F(Log, RecordsNoticesForTheSystemLogAtLevelFour) {
  const support::LogCapture capture(0);
  syslogger_notice("start %s", "now");
  ASSERT_EQ(capture.entries().size(), 1U);
  EXPECT_TRUE(capture.entries().front().systemLog);
  EXPECT_EQ(capture.entries().front().level, 4);
}

TEST_F(Log, SurvivesASinkThatThrowsAndLogs) {
  int calls = 0;
  std::optional<support::LogCapture> failing(std::in_place, 6, [&](const host::LogEntry&) {
    ++calls;
    log(0, "from inside");
    throw std::runtime_error("on purpose");
  });
  const support::LogCapture capture;
  log(1, "one");
  log(1, "two");
  failing.reset();
  log(1, "three");
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(capture.entries().size(), 3U)
      << "the other sink gets all entries but those from inside";
}

TEST_F(Log, NumbersTheEntriesOfAllThreads) {
  const support::LogCapture capture(1);
  const auto write = [] {
    for (int i = 0; i < 500; ++i) log(1, "x");
  };
  std::thread one(write);
  std::thread two(write);
  for (int i = 0; i < 20; ++i) {
    const support::LogCapture another(1);
    log(1, "y");
  }
  one.join();
  two.join();
  const auto entries = capture.entries();
  ASSERT_EQ(entries.size(), 1020U);
  for (std::size_t i = 1; i < entries.size(); ++i) {
    ASSERT_EQ(entries[i].number, entries[i - 1].number + 1);
  }
}

TEST(LogCapture, RestoresTheLevel) {
  const int before = ApplicationLog::instance().level();
  { const support::LogCapture capture(6); }
  EXPECT_EQ(ApplicationLog::instance().level(), before);
}

TEST(LogCapture, WaitsForAnEntry) {
  const support::LogCapture capture;
  std::thread writer([] { log(1, "the awaited entry"); });
  EXPECT_TRUE(capture.waitForPart("awaited"));
  writer.join();
  EXPECT_FALSE(capture.waitForPart("another", 0s));
}

}  // namespace
