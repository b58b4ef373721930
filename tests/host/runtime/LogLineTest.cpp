#include "runtime/LogLine.h"

#include <gtest/gtest.h>

#include <string>

namespace host {
namespace {

LogEntry leveledEntry(int level, const std::string& text) {
  LogEntry made;
  made.wall = std::chrono::seconds(1466035201);
  made.level = level;
  made.component = "ClockService";
  made.text = text;
  return made;
}

TEST(LogLine, HoldsDeviceTimeLevelComponentAndText) {
  EXPECT_EQ(logLine(leveledEntry(4, "listening"), false),
            "2016-06-16T00:00:01Z note     ClockService: listening\n");
}

TEST(LogLine, DeviceTimeStartsIn1970) {
  LogEntry made = leveledEntry(4, "first");
  made.wall = {};
  EXPECT_EQ(logLine(made, false), "1970-01-01T00:00:00Z note     ClockService: first\n");
}

TEST(LogLine, EachLevelHasItsName) {
  const char* const names[] = {"fatal", "fatal", "critical", "error", "warning",
                               "note",  "info",  "trace",    "trace"};
  for (int level = -1; level <= 7; ++level) {
    const std::string name = names[level + 1];
    EXPECT_EQ(
        logLine(leveledEntry(level, "x"), false),
        "2016-06-16T00:00:01Z " + name + std::string(8 - name.size(), ' ') + " ClockService: x\n");
  }
}

TEST(LogLine, NameOfTheLevelIsInColourOnATerminal) {
  EXPECT_EQ(logLine(leveledEntry(2, "x"), true),
            "2016-06-16T00:00:01Z \033[1;31merror\033[m    ClockService: x\n");
}

TEST(LogLine, FinalNewlinesAreDropped) {
  EXPECT_EQ(logLine(leveledEntry(2, "Cannot find it\n\n"), false),
            "2016-06-16T00:00:01Z error    ClockService: Cannot find it\n");
}

TEST(LogLine, UnprintableBytesAreShownAndDoNotBreakTheLine) {
  EXPECT_EQ(logLine(leveledEntry(2, std::string("a\nb\0c\x1b[31m\x7f \xc3\xbc", 14)), false),
            "2016-06-16T00:00:01Z error    ClockService: a\\x0Ab\\x00c\\x1B[31m\\x7F \\xC3\\xBC\n");
}

TEST(LogLine, SystemLogIsNamed) {
  LogEntry made = leveledEntry(4, "startNTPClient()");
  made.systemLog = true;
  EXPECT_EQ(logLine(made, false), "2016-06-16T00:00:01Z note     system log: startNTPClient()\n");
}

}  // namespace
}  // namespace host
