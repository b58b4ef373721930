#include "runtime/LogLine.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include <string>

#include "base/Descriptor.h"
#include "support/TemporaryFolder.h"

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
    EXPECT_EQ(logLine(entryOf(4, row.text), LogStyle::plain),
              "2016-06-16T00:00:01Z note     ClockService: " + row.shown + "\n");
  }
}

TEST(LogLine, TimeStartsIn1970) {
  LogEntry entry = entryOf(4, "first");
  entry.wall = {};
  EXPECT_EQ(logLine(entry, LogStyle::plain), "1970-01-01T00:00:00Z note     ClockService: first\n");
}

TEST(LogLine, EachLevelHasItsName) {
  const char* const names[] = {"fatal", "fatal", "critical", "error", "warning",
                               "note",  "info",  "trace",    "trace"};
  for (int level = -1; level <= 7; ++level) {
    const std::string name = names[level + 1];
    EXPECT_EQ(
        logLine(entryOf(level, "x"), LogStyle::plain),
        "2016-06-16T00:00:01Z " + name + std::string(8 - name.size(), ' ') + " ClockService: x\n");
  }
}

TEST(LogLine, LevelIsColouredOnATerminal) {
  EXPECT_EQ(logLine(entryOf(2, "x"), LogStyle::colour),
            "2016-06-16T00:00:01Z \033[1;31merror\033[m    ClockService: x\n");
}

TEST(LogLine, BeginsWithTheJournalsPriority) {
  for (int level = 0; level <= 6; ++level) {
    EXPECT_EQ(
        logLine(entryOf(level, "x"), LogStyle::journal),
        '<' + std::to_string(level + 1) + '>' + logLine(entryOf(level, "x"), LogStyle::plain));
  }
}

// A program's children inherit the variable, and may write elsewhere.
TEST(LogLine, OnlyTheDescriptorInTheVariableLeadsToTheJournal) {
  const support::TemporaryFolder folder;
  const Descriptor file(::open((folder / "file").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  struct stat found {};
  ASSERT_EQ(::fstat(file.get(), &found), 0);
  const std::string device = std::to_string(found.st_dev);
  const std::string inode = std::to_string(found.st_ino);
  const std::pair<std::string, LogStyle> rows[] = {{device + ':' + inode, LogStyle::journal},
                                                   {device + ':' + inode + '0', LogStyle::plain},
                                                   {inode + ':' + device, LogStyle::plain},
                                                   {"", LogStyle::plain}};
  for (const auto& [stream, style] : rows) {
    ::setenv("JOURNAL_STREAM", stream.c_str(), 1);
    EXPECT_EQ(styleFor(file.get()), style) << stream;
    EXPECT_EQ(styleFor(-1), LogStyle::plain);
  }
  ::unsetenv("JOURNAL_STREAM");
  EXPECT_FALSE(leadsToJournal(file.get()));
}

TEST(LogLine, NamesTheSystemLogInsteadOfAComponent) {
  LogEntry entry = entryOf(4, "startNTPClient()");
  entry.systemLog = true;
  EXPECT_EQ(logLine(entry, LogStyle::plain),
            "2016-06-16T00:00:01Z note     system log: startNTPClient()\n");
}

}  // namespace
}  // namespace host
