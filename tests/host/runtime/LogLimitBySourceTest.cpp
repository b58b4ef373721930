#include "runtime/LogLimitBySource.h"

#include <gtest/gtest.h>

#include <string>

namespace host {
namespace {

using namespace std::chrono_literals;
using Time = LogLimitBySource::Clock::time_point;

constexpr std::size_t kMost = 3;
constexpr auto kWindow = 10s;
constexpr Time kStart{1000s};

LogEntry entryFrom(const std::string& file, int line, std::chrono::seconds wall = 5s) {
  return {.wall = wall, .component = "ClockService", .file = file, .line = line, .text = ""};
}

// How many of `count` equal entries are admitted.
std::size_t admitted(LogLimitBySource& limit, const LogEntry& entry, std::size_t count, Time now) {
  std::size_t yes = 0;
  for (std::size_t i = 0; i < count; ++i) yes += limit.admits(entry, now) ? 1U : 0U;
  return yes;
}

TEST(LogLimitBySource, AdmitsTheLimitInEachWindow) {
  LogLimitBySource limit(kMost, kWindow);
  EXPECT_EQ(admitted(limit, entryFrom("a.cpp", 1), kMost, kStart), kMost);
  EXPECT_EQ(admitted(limit, entryFrom("a.cpp", 1), kMost, kStart + kWindow), kMost);
  EXPECT_EQ(admitted(limit, entryFrom("a.cpp", 1), 5, kStart + 2 * kWindow - 1ns), 0U);
}

TEST(LogLimitBySource, AppliesToEachPlaceAndComponent) {
  LogLimitBySource limit(kMost, kWindow);
  EXPECT_EQ(admitted(limit, entryFrom("a.cpp", 1), 5, kStart), kMost);
  EXPECT_EQ(admitted(limit, entryFrom("a.cpp", 2), 5, kStart), kMost);
  EXPECT_EQ(admitted(limit, entryFrom("b.cpp", 1), 5, kStart), kMost);
  LogEntry other = entryFrom("a.cpp", 1);
  other.component = "Other";
  EXPECT_EQ(admitted(limit, other, 5, kStart), kMost);
}

TEST(LogLimitBySource, ReportsTheNumberOnceAfterTheWindow) {
  LogLimitBySource limit(kMost, kWindow);
  admitted(limit, entryFrom("src/a.cpp", 7, 42s), kMost + 2, kStart);
  EXPECT_EQ(limit.nextSummary(), kStart + kWindow);
  EXPECT_TRUE(limit.summaries(kStart + kWindow - 1ns).empty());
  const auto lines = limit.summaries(kStart + kWindow);
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].text,
            "2 lines suppressed of ClockService: a.cpp:7: one place in the code may write 3 lines "
            "in 10 s");
  EXPECT_EQ(lines[0].component, "clockhost");
  EXPECT_EQ(lines[0].level, 3);
  EXPECT_EQ(lines[0].wall, 42s);
  EXPECT_TRUE(limit.summaries(kStart + 2 * kWindow).empty());
  EXPECT_EQ(admitted(limit, entryFrom("src/a.cpp", 7), 5, kStart + kWindow), kMost);
}

// No line comes between a gap and the line that reports it.
TEST(LogLimitBySource, AdmitsNothingBeforeTheNumberIsReported) {
  LogLimitBySource limit(kMost, kWindow);
  admitted(limit, entryFrom("a.cpp", 1), kMost + 1, kStart);
  EXPECT_EQ(admitted(limit, entryFrom("a.cpp", 1), 1, kStart + 2 * kWindow), 0U);
  EXPECT_EQ(limit.summaries(kStart + 2 * kWindow).at(0).text.substr(0, 18), "2 lines suppressed");
}

TEST(LogLimitBySource, ReportsNothingWhileNothingIsSuppressed) {
  LogLimitBySource limit(kMost, kWindow);
  admitted(limit, entryFrom("a.cpp", 1), kMost, kStart);
  EXPECT_EQ(limit.nextSummary(), Time::max());
  EXPECT_TRUE(limit.summaries(Time::max()).empty());
}

TEST(LogLimitBySource, ReportsEachPlaceAfterItsOwnWindow) {
  LogLimitBySource limit(kMost, kWindow);
  admitted(limit, entryFrom("b.cpp", 1), kMost + 1, kStart + 1s);
  admitted(limit, entryFrom("a.cpp", 1), kMost + 2, kStart);
  EXPECT_EQ(limit.nextSummary(), kStart + kWindow);
  EXPECT_EQ(limit.summaries(kStart + kWindow).size(), 1U);
  EXPECT_EQ(limit.nextSummary(), kStart + 1s + kWindow);
  EXPECT_EQ(limit.summaries(kStart + 1s + kWindow).size(), 1U);
  EXPECT_EQ(limit.nextSummary(), Time::max());
}

TEST(LogLimitBySource, NamesTheSystemLog) {
  LogLimitBySource limit(kMost, kWindow);
  LogEntry notice;
  notice.systemLog = true;
  admitted(limit, notice, kMost + 1, kStart);
  EXPECT_EQ(limit.summaries(Time::max()).at(0).text.substr(0, 36),
            "1 lines suppressed of the system log");
}

}  // namespace
}  // namespace host
