#include "runtime/LogLine.h"

#include <gtest/gtest.h>

#include <string>

namespace host {
namespace {

LogEntry entryOf(int level, const std::string& text) {
  return {.wall = std::chrono::seconds(1466035201),
          .level = level,
          .component = "ClockService",
          .file = "",
          .text = text};
}

TEST(LogLine, HasTimeLevelComponentAndPrintableText) {
  const struct {
    std::string text;
    std::string shown;
  } rows[] = {
      {"listening", "listening"},
      {"final newlines\n\n", "final newlines"},
      {std::string("a\nb\0c\x1b[31m\x7f \xc3\xbc", 14), "a\\x0Ab\\x00c\\x1B[31m\\x7F \\xC3\\xBC"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(logLine(entryOf(4, row.text), false),
              "2016-06-16T00:00:01Z note     ClockService: " + row.shown + "\n");
  }
}

TEST(LogLine, TimeStartsIn1970) {
  LogEntry entry = entryOf(4, "first");
  entry.wall = {};
  EXPECT_EQ(logLine(entry, false), "1970-01-01T00:00:00Z note     ClockService: first\n");
}

TEST(LogLine, EachLevelHasItsName) {
  const char* const names[] = {"fatal", "fatal", "critical", "error", "warning",
                               "note",  "info",  "trace",    "trace"};
  for (int level = -1; level <= 7; ++level) {
    const std::string name = names[level + 1];
    EXPECT_EQ(
        logLine(entryOf(level, "x"), false),
        "2016-06-16T00:00:01Z " + name + std::string(8 - name.size(), ' ') + " ClockService: x\n");
  }
}

TEST(LogLine, LevelIsColouredOnATerminal) {
  EXPECT_EQ(logLine(entryOf(2, "x"), true),
            "2016-06-16T00:00:01Z \033[1;31merror\033[m    ClockService: x\n");
}

TEST(LogLine, NamesTheSystemLogInsteadOfAComponent) {
  LogEntry entry = entryOf(4, "startNTPClient()");
  entry.systemLog = true;
  EXPECT_EQ(logLine(entry, false), "2016-06-16T00:00:01Z note     system log: startNTPClient()\n");
}

}  // namespace
}  // namespace host
