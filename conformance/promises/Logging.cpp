#include "Logging.h"

#include <string>
#include <vector>

#include "Promise.h"

namespace {

class LoggingPromise : public conformance::Promise {
 protected:
  // The entries of "Part", since a framework may log too.
  std::vector<conformance::LogEntry> entries() {
    std::vector<conformance::LogEntry> own;
    for (const conformance::LogEntry& entry : platform().logEntries())
      if (entry.component == "Part") own.push_back(entry);
    return own;
  }
};

TEST_F(LoggingPromise, LogsAtTheLevelAndBelow) {
  promises("True when the level of `component` is `level` or higher.");
  for (int level = 0; level <= 6; ++level) {
    platform().setLogLevel(level);
    for (int asked = 0; asked <= 6; ++asked)
      EXPECT_EQ(loggingOnAppUni("Part", asked), asked <= level) << asked << " at " << level;
  }
}

TEST_F(LoggingPromise, WritesEntriesWithTheirSource) {
  promises("Writes one entry, printf-style; dropped when the level is off. file, line: where");
  platform().setLogLevel(5);
  logAppUni("Part", 5, "src/file.cpp", 42, "%d of %s", 3, "four");
  const auto written = entries();
  ASSERT_EQ(written.size(), 1U);
  EXPECT_EQ(written[0].level, 5);
  EXPECT_EQ(written[0].file, "src/file.cpp");
  EXPECT_EQ(written[0].line, 42);
  EXPECT_EQ(written[0].text, "3 of four");
}

TEST_F(LoggingPromise, DropsEntriesAboveTheLevel) {
  promises("dropped when the level is off.");
  platform().setLogLevel(2);
  logAppUni("Part", 2, "file.cpp", 1, "first");
  logAppUni("Part", 3, "file.cpp", 2, "dropped");
  logAppUni("Part", 1, "file.cpp", 3, "second");
  const auto written = entries();
  ASSERT_EQ(written.size(), 2U);
  EXPECT_EQ(written[0].text, "first");
  EXPECT_EQ(written[1].text, "second");
}

TEST_F(LoggingPromise, WritesLongTextsOfAnyThread) {
  promises("Thread: any; no operation throws.");
  platform().setLogLevel(1);
  const std::string text(1'000'000, 'x');
  conformance::onTwoThreads([&text] {
    logAppUni("Part", 1, "file.cpp", 1, "%s", text.c_str());
    syslogger_notice("%s", text.c_str());
  });
  const auto written = entries();
  ASSERT_EQ(written.size(), 2U);
  for (const auto& entry : written)
    EXPECT_EQ(entry.text.substr(0, 100), text.substr(0, 100)) << "it may be clipped";
}

TEST_F(LoggingPromise, WritesToTheSystemLogAtAnyLevel) {
  promises("Writes one entry of priority \"notice\" to the system log, printf-style.");
  platform().setLogLevel(0);
  syslogger_notice("start %s", "now");
  EXPECT_EQ(platform().systemLogTexts(), std::vector<std::string>{"start now"});
}

TEST_F(LoggingPromise, KnowsTheConfiguredLevel) {
  promises("The level 0-6 configured for `component`");
  for (int level = 0; level <= 6; ++level) {
    platform().setLogLevel(level);
    EXPECT_EQ(TraceProfile::GetLevel("ClockService"), level);
  }
}

}  // namespace
