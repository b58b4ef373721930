#include "runtime/StderrLog.h"

#include <gtest/gtest.h>

#include <string>

namespace host {
namespace {

LogEntry entry(int level, const std::string& text) {
  LogEntry made;
  made.wall = std::chrono::seconds(1466035201);
  made.level = level;
  made.component = "ClockService";
  made.text = text;
  return made;
}

std::string printed(const LogEntry& entry) {
  ::testing::internal::CaptureStderr();
  StderrLog().write(entry);
  return ::testing::internal::GetCapturedStderr();
}

TEST(StderrLog, LineHoldsDeviceTimeLevelComponentAndText) {
  EXPECT_EQ(printed(entry(4, "listening")),
            "2016-06-16T00:00:01Z note     ClockService: listening\n");
}

TEST(StderrLog, DeviceTimeStartsIn1970) {
  LogEntry made = entry(4, "first");
  made.wall = {};
  EXPECT_EQ(printed(made), "1970-01-01T00:00:00Z note     ClockService: first\n");
}

TEST(StderrLog, EachLevelHasItsName) {
  const char* const names[] = {"fatal", "critical", "error", "warning", "note", "info", "trace"};
  for (int level = 0; level <= 6; ++level) EXPECT_STREQ(levelName(level), names[level]);
  EXPECT_STREQ(levelName(-1), "fatal");
  EXPECT_STREQ(levelName(7), "trace");
}

TEST(StderrLog, FinalNewlinesAreDropped) {
  EXPECT_EQ(printed(entry(2, "Cannot find it\n\n")),
            "2016-06-16T00:00:01Z error    ClockService: Cannot find it\n");
}

TEST(StderrLog, UnprintableBytesAreShownAndDoNotBreakTheLine) {
  EXPECT_EQ(printed(entry(2, std::string("a\nb\0c\x1b[31m\x7f \xc3\xbc", 14))),
            "2016-06-16T00:00:01Z error    ClockService: a\\x0Ab\\x00c\\x1B[31m\\x7F \\xC3\\xBC\n");
}

TEST(StderrLog, SystemLogIsNamed) {
  LogEntry made = entry(4, "startNTPClient()");
  made.systemLog = true;
  EXPECT_EQ(printed(made), "2016-06-16T00:00:01Z note     system log: startNTPClient()\n");
}

}  // namespace
}  // namespace host
